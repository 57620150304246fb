// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/file_operator.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <array>
#include <limits>

#include "app/private_folder.h"
#include "platform/durable_file.h"

namespace keeper {
namespace {

QString programsMarker() {
    return QStringLiteral("MORV_Programs/");
}

QString programsX86Marker() {
    return QStringLiteral("MORV_Programs(x86)/");
}

QString systemPrefix() {
    return QStringLiteral("/usr/");
}

QString vendorPrefix() {
    return QStringLiteral("/opt/");
}

/// Where a program's package may have been built to go instead, below the same prefix.
QString localStep() {
    return QStringLiteral("local/");
}

QString withLastSlash(const QString& path, bool withSlash) {
    if (path.isEmpty() || path == u'/' || path.endsWith(u'/') == withSlash) {
        return path;
    }
    return withSlash ? path + u'/' : path.chopped(1);
}

/// The longest beginning of at most `bytes` in UTF-8, never half a character.
QString cutToBytes(const QString& text, qsizetype bytes) {
    QString cut = text;
    while (cut.toUtf8().size() > bytes) {
        cut.chop(cut.size() > 1 && cut.back().isLowSurrogate() ? 2 : 1);
    }
    return cut;
}

}  // namespace

FileOperator::FileOperator(const UserFolders& folders, const Clock& clock, Prompt& prompt,
                           const PrivateFolderOwner& owner)
    : m_folders(folders), m_clock(clock), m_prompt(prompt), m_owner(owner) {}

QString FileOperator::GetUserNameByPath(const QString& path) {
    return privatefolder::userNameOf(path);
}

void FileOperator::EnsureNotExist(const QString& path) {
    QFile::remove(path);
}

bool FileOperator::FileValid(const QString& path) {
    const QFileInfo file(path);
    return file.isFile() && file.size() >= 1;
}

QString FileOperator::ReducePath(const QString& path, bool withSlash) const {
    const QString folder = withLastSlash(m_owner.p_privateFolder(), false);
    // A folder above it may bear the same name.
    if (!folder.isEmpty() && (path == folder || path.startsWith(folder + u'/'))) {
        return withLastSlash(path.mid(folder.lastIndexOf(u'/') + 1), withSlash);
    }
    const QString marker = privatefolder::prefix() + m_owner.p_userName() + u'/';
    // Only a whole step of the path counts: "x" before the prefix would make another folder of it.
    const qsizetype step = path.startsWith(marker) ? 0 : path.indexOf(u'/' + marker) + 1;
    const bool isInside = !m_owner.p_userName().isEmpty() && (step > 0 || path.startsWith(marker));
    return withLastSlash(isInside ? path.mid(step) : path, withSlash);
}

QString FileOperator::ResolvePath(const QString& path, bool withSlash) const {
    const QString name = privatefolder::prefix() + m_owner.p_userName();
    if (m_owner.p_userName().isEmpty() || (path != name && !path.startsWith(name + u'/'))) {
        return withLastSlash(path, withSlash);
    }
    const QString parent = QFileInfo(m_owner.p_privateFolder()).path();
    return withLastSlash(QDir(parent).filePath(path), withSlash);
}

QString FileOperator::ReduceProgramPath(const QString& path) {
    if (path.startsWith(systemPrefix())) {
        return programsMarker() + path.mid(systemPrefix().size());
    }
    if (path.startsWith(vendorPrefix())) {
        return programsX86Marker() + path.mid(vendorPrefix().size());
    }
    return path;
}

QString FileOperator::GetProgramFolder(bool x86) const {
    return GetUserFolder(x86 ? ProgramsX86 : Programs, NoFlags);
}

QString FileOperator::ResolveProgramPath(const QString& path) const {
    if (path.startsWith(programsX86Marker())) {
        return GetProgramFolder(true) + u'/' + path.mid(programsX86Marker().size());
    }
    if (!path.startsWith(programsMarker())) {
        return path;
    }
    // Joined as texts: a tail that begins with a second slash must come back as it was.
    const QString folder = GetProgramFolder(false) + u'/';
    const QString tail = path.mid(programsMarker().size());
    const QString other =
        tail.startsWith(localStep()) ? tail.mid(localStep().size()) : localStep() + tail;
    const bool isMoved = !QFileInfo::exists(folder + tail) && QFileInfo::exists(folder + other);
    return folder + (isMoved ? other : tail);
}

QString FileOperator::GetFileLenHuman_Path(const QString& path) {
    const QFileInfo file(path);
    if (!file.isFile()) {
        return QStringLiteral("文件不存在");
    }
    return file.size() > std::numeric_limits<qint32>::max() ? QStringLiteral("文件太大")
                                                            : GetFileLenHuman_Size(file.size());
}

QString FileOperator::GetFileLenHuman_Size(qint64 size) {
    constexpr qint64 step = 1024;
    const auto scaled = [size](qint64 unit) {
        // Cut, not rounded: 1023.999 KB must not read as 1024 KB.
        const qint64 hundredths = size * 100 / unit;
        QString text = QString::number(static_cast<double>(hundredths) / 100, 'f', 2);
        while (text.endsWith(u'0')) {
            text.chop(1);
        }
        return text.endsWith(u'.') ? text.chopped(1) : text;
    };
    if (size >= step * step * step) {
        return scaled(step * step * step) + QStringLiteral(" GB");
    }
    if (size >= step * step) {
        return scaled(step * step) + QStringLiteral(" MB");
    }
    return size >= step ? scaled(step) + QStringLiteral(" KB")
                        : QString::number(size) + QStringLiteral(" B");
}

QString FileOperator::GetBackupFilePath(bool isDated, const QString& tail) const {
    constexpr qsizetype longestName = 255;
    const QString start = m_owner.p_userName() + u'-';
    const QString end = u'-' +
                        (isDated ? m_clock.now().toString(QStringLiteral("yyyyMMdd_HHmm"))
                                 : QStringLiteral("覆盖备份")) +
                        QStringLiteral(".kvdb");
    QString tip = m_owner.p_lgnKeyTip();
    // New hints cannot hold these, but a name with them would lead into another folder.
    tip.replace(u'/', u'_').remove(QChar(0));
    tip = cutToBytes(tip, qMax<qsizetype>(0, longestName - (start + end).toUtf8().size()));
    return QDir(tail).filePath(start + tip + end);
}

QString FileOperator::GetDesktopPath() const {
    return m_folders.desktop;
}

QString FileOperator::GetCurrentFolder() {
    return QDir::currentPath();
}

QString FileOperator::FileDialog(bool isSave, const QString& title, const QString& path,
                                 const QString& filter) const {
    return isSave ? m_prompt.saveFile(title, path, filter) : m_prompt.openFile(title, path, filter);
}

QString FileOperator::GetUserFolder(int code, int flags) const {
    auto folder = [&]() -> QString {
        switch (code) {
            case Documents:
                return m_folders.documents;
            case Music:
                return m_folders.music;
            case Videos:
                return m_folders.videos;
            case Desktop:
                return m_folders.desktop;
            case Configuration:
                return m_folders.configuration;
            case LocalData:
                return m_folders.data;
            case Programs:
                return systemPrefix().chopped(1);
            case Pictures:
                return m_folders.pictures;
            case Profile:
                return m_folders.home;
            case ProgramsX86:
                return vendorPrefix().chopped(1);
            default:
                return {};
        }
    }();
    if ((flags & CreateFolder) != 0 && !folder.isEmpty()) {
        ensureFolder(folder);
    }
    return folder;
}

QString FileOperator::BrowseFolder(const QString& title, const QString& folder) const {
    return m_prompt.chooseFolder(title, folder);
}

QString FileOperator::GetTempPath() const {
    return m_folders.temporary;
}

}  // namespace keeper

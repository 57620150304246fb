// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/linux/folder_links.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <cerrno>

namespace keeper {
namespace {

bool isThere(const QByteArray& path) {
    struct stat status {};
    return ::lstat(path.constData(), &status) == 0;
}

/// The folder `to` with the rights of `from`, and always those that its owner needs to fill it.
void makeLike(const QString& from, const QString& to) {
    struct stat status {};
    if (::stat(QFile::encodeName(from).constData(), &status) == 0) {
        ::mkdir(QFile::encodeName(to).constData(), (status.st_mode & 0777) | S_IRWXU);
    }
}

/// Calls `each` with the path below `root` of every folder, before its content, and regular file.
/// Stops when `each` returns false.
template <typename Each>
void walk(const QString& root, const Each& each) {
    QDirIterator content(
        root, QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (content.hasNext()) {
        const QString path = content.next();
        if (!each(path.mid(root.size()), content.fileInfo().isDir())) {
            return;
        }
    }
}

}  // namespace

void FolderLinks::make(const QString& folder) const {
    if (!restore(folder)) {
        return;
    }
    remove();
    makeLike(folder, m_mirror);
    walk(folder, [&](const QString& name, bool isFolder) {
        if (isFolder) {
            makeLike(folder + name, m_mirror + name);
            return true;
        }
        return ::link(QFile::encodeName(folder + name).constData(),
                      QFile::encodeName(m_mirror + name).constData()) == 0 ||
               errno != EXDEV;
    });
}

bool FolderLinks::isWhole(const QString& folder) const {
    bool isWhole = true;
    walk(m_mirror, [&](const QString& name, bool isFolder) {
        isWhole = isFolder || isThere(QFile::encodeName(folder + name));
        return isWhole;
    });
    return isWhole;
}

bool FolderLinks::restore(const QString& folder) const {
    bool isRestored = true;
    walk(m_mirror, [&](const QString& name, bool isFolder) {
        if (isFolder) {
            return true;
        }
        const QByteArray path = QFile::encodeName(folder + name);
        if (isThere(path)) {
            return true;
        }
        makeLike(m_mirror, folder);
        for (qsizetype end = name.indexOf(u'/', 1); end > 0; end = name.indexOf(u'/', end + 1)) {
            makeLike(m_mirror + name.first(end), folder + name.first(end));
        }
        isRestored =
            ::link(QFile::encodeName(m_mirror + name).constData(), path.constData()) == 0 &&
            isRestored;
        return true;
    });
    return isRestored;
}

void FolderLinks::remove() const {
    QDir(m_mirror).removeRecursively();
}

}  // namespace keeper

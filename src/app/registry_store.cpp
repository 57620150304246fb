// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/registry_store.h"

#include <QDir>
#include <QFile>
#include <algorithm>

#include "platform/durable_file.h"
#include "store/failure.h"

namespace keeper {
namespace {

/// Thousands of users fit; whatever is larger was not written here.
constexpr qint64 largestFile = 16 * 1024 * 1024;

QString damagedSuffix() {
    return QStringLiteral("damaged-");
}

[[noreturn]] void refuse(RegistryImage::Fault fault, const QString& path) {
    throw KeeperError(1, QStringLiteral("Regedit"),
                      fault == RegistryImage::Fault::Newer
                          ? QStringLiteral("用户注册文件由更高版本的程序写入：%1").arg(path)
                          : QStringLiteral("用户注册文件已损坏：%1").arg(path));
}

}  // namespace

RegistryStore::RegistryStore(QString folder, const Clock& clock)
    : m_folder(std::move(folder)), m_clock(clock) {}

QStringList RegistryStore::damagedFiles() const {
    return filesAside(damagedSuffix());
}

QStringList RegistryStore::filesAside(const QString& suffix) const {
    const QDir folder(m_folder);
    QStringList files;
    for (const QString& name :
         folder.entryList({QStringLiteral("registry.%1*").arg(suffix)}, QDir::Files)) {
        files << folder.filePath(name);
    }
    return files;
}

QString RegistryStore::path() const {
    return m_folder + QStringLiteral("/registry");
}

RegistryImage RegistryStore::read() const {
    const auto bytes = readWholeFile(path(), largestFile);
    if (!bytes) {
        return {};
    }
    RegistryImage::Fault fault{};
    RegistryImage image = RegistryImage::fromBytes(*bytes, fault);
    if (fault != RegistryImage::Fault::None) {
        refuse(fault, path());
    }
    return image;
}

void RegistryStore::keepAside(const QByteArray& bytes, const QString& suffix) const {
    const QStringList kept = filesAside(suffix);
    // A disk that is full for a week must not gather a copy at each attempt.
    const bool isKept = std::ranges::any_of(kept, [&](const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) && file.readAll() == bytes;
    });
    if (!isKept) {
        copyAside(path(), bytes,
                  suffix + m_clock.now().toString(QStringLiteral("yyyyMMddTHHmmss")));
    }
}

void RegistryStore::change(const std::function<void(RegistryImage&)>& operation) {
    ensurePrivateFolder(m_folder);
    const FileLock lock(path() + QStringLiteral(".lock"));
    const auto bytes = readWholeFile(path(), largestFile);
    RegistryImage::Fault fault = RegistryImage::Fault::None;
    RegistryImage image = bytes ? RegistryImage::fromBytes(*bytes, fault) : RegistryImage();
    if (fault == RegistryImage::Fault::Newer) {
        refuse(fault, path());
    }
    const RegistryImage before = image;
    m_keepsFormer = false;
    operation(image);
    if (bytes && image == before) {
        return;
    }
    const QByteArray next = image.toBytes();
    if (next.size() > largestFile) {
        throw KeeperError(1, QStringLiteral("Regedit"),
                          QStringLiteral("用户注册文件将超过 16 MiB，没有写入：%1").arg(path()));
    }
    // The new file stands for it only once it is kept.
    if (fault == RegistryImage::Fault::Damaged) {
        keepAside(*bytes, damagedSuffix());
    } else if (bytes && m_keepsFormer) {
        keepAside(*bytes, QStringLiteral("record-"));
    }
    replaceFile(path(), next);
}

}  // namespace keeper

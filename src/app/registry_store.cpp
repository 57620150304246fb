// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/registry_store.h"

#include "platform/durable_file.h"
#include "store/failure.h"

namespace keeper {
namespace {

/// Thousands of users fit; whatever is larger was not written here.
constexpr qint64 largestFile = 16 * 1024 * 1024;

[[noreturn]] void refuse(RegistryImage::Fault fault, const QString& path) {
    throw KeeperError(1, QStringLiteral("Regedit"),
                      fault == RegistryImage::Fault::Newer
                          ? QStringLiteral("用户注册文件由更高版本的程序写入：%1").arg(path)
                          : QStringLiteral("用户注册文件已损坏：%1").arg(path));
}

}  // namespace

RegistryStore::RegistryStore(QString folder, const Clock& clock)
    : m_folder(std::move(folder)), m_clock(clock) {}

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

RegistryImage RegistryStore::readForChange(bool& exists) {
    const auto bytes = readWholeFile(path(), largestFile);
    exists = bytes.has_value();
    if (!exists) {
        return {};
    }
    RegistryImage::Fault fault{};
    RegistryImage image = RegistryImage::fromBytes(*bytes, fault);
    if (fault == RegistryImage::Fault::Newer) {
        refuse(fault, path());
    }
    if (fault == RegistryImage::Fault::Damaged) {
        setFileAside(path(), QStringLiteral("damaged-") +
                                 m_clock.now().toString(QStringLiteral("yyyyMMddTHHmmss")));
        exists = false;
    }
    return image;
}

void RegistryStore::change(const std::function<void(RegistryImage&)>& operation) {
    ensurePrivateFolder(m_folder);
    const FileLock lock(path() + QStringLiteral(".lock"));
    bool exists = false;
    RegistryImage image = readForChange(exists);
    const RegistryImage before = image;
    operation(image);
    if (!exists || !(image == before)) {
        replaceFile(path(), image.toBytes());
    }
}

}  // namespace keeper

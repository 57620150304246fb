// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/regedit.h"

#include <utility>

#include "store/failure.h"

namespace keeper {
namespace {

QString publicKey() {
    return QStringLiteral("SOFTWARE\\Tarnvalle\\Morvane Keeper\\Public");
}

QString folderName() {
    return QStringLiteral("kvdbFolder");
}

/// Leaves RegistryStore::change() without writing.
struct Abandoned : std::exception {};

}  // namespace

Regedit::Regedit(RegistryStore& store, const UserFolders& folders)
    : m_store(store), m_folders(folders) {}

std::optional<RegistryImage> Regedit::load() const {
    if (m_pending != nullptr) {
        return *m_pending;
    }
    try {
        return m_store.read();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

QString Regedit::fault() const {
    try {
        static_cast<void>(m_store.read());
        return {};
    } catch (...) {
        return currentFailure().description;
    }
}

bool Regedit::change(const std::function<void(RegistryImage&)>& operation) {
    if (m_pending != nullptr) {
        operation(*m_pending);
        return true;
    }
    try {
        RegistryImage written;
        m_store.change([&](RegistryImage& all) {
            operation(all);
            written = all;
        });
        m_snapshot = std::move(written);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool Regedit::atomically(const std::function<bool()>& changes) {
    if (m_pending != nullptr) {
        return changes();
    }
    const bool done = change([&](RegistryImage& image) {
        m_pending = &image;
        bool good = false;
        try {
            good = changes();
        } catch (...) {
            m_pending = nullptr;
            throw;
        }
        m_pending = nullptr;
        if (!good) {
            throw Abandoned();
        }
    });
    return done;
}

std::optional<RegistryValue> Regedit::value(const QString& name) const {
    return m_key ? (m_pending != nullptr ? *m_pending : m_snapshot).value(*m_key, name)
                 : std::nullopt;
}

QString Regedit::getString(const QString& name) const {
    const auto found = value(name);
    const auto* text = found ? std::get_if<QString>(&*found) : nullptr;
    return text != nullptr ? *text : QString();
}

std::uint32_t Regedit::getDWord(const QString& name) const {
    const auto found = value(name);
    const auto* number = found ? std::get_if<std::uint32_t>(&*found) : nullptr;
    return number != nullptr ? *number : 0;
}

QStringList Regedit::getEnumString() const {
    return m_key ? (m_pending != nullptr ? *m_pending : m_snapshot).valueNames(*m_key)
                 : QStringList();
}

Regedit::Disposition Regedit::createKeyEx(Root /*root*/, const QString& path) {
    closeKey();
    Disposition disposition = Disposition::Failed;
    const bool done = change([&](RegistryImage& all) {
        disposition = all.hasKey(path) ? Disposition::Opened : Disposition::Created;
        all.createKey(path);
    });
    if (!done) {
        return Disposition::Failed;
    }
    m_key = path;
    m_access = Access::ReadWrite;
    return disposition;
}

bool Regedit::openKeyEx(Root /*root*/, const QString& path, Access access) {
    closeKey();
    auto all = load();
    if (!all || !all->hasKey(path)) {
        return false;
    }
    m_snapshot = std::move(*all);
    m_key = path;
    m_access = access;
    return true;
}

bool Regedit::setValue(const QString& name, const RegistryValue& value) {
    if (!m_key || m_access == Access::Read) {
        return false;
    }
    bool keyStands = false;
    const bool done = change([&](RegistryImage& all) {
        // Another program may have deleted the key since it was opened.
        keyStands = all.hasKey(*m_key);
        if (keyStands) {
            all.setValue(*m_key, name, value);
        }
    });
    return done && keyStands;
}

bool Regedit::setString(const QString& name, const QString& value) {
    return setValue(name, value);
}

bool Regedit::setDWord(const QString& name, std::uint32_t value) {
    return setValue(name, value);
}

bool Regedit::openKey(Root root, const QString& path) {
    return openKeyEx(root, path, Access::Read);
}

bool Regedit::createKey(Root root, const QString& path) {
    return createKeyEx(root, path) != Disposition::Failed;
}

void Regedit::closeKey() {
    m_key.reset();
    m_snapshot = {};
}

bool Regedit::deleteValue(const QString& name) {
    if (!m_key || m_access == Access::Read) {
        return false;
    }
    return change([&](RegistryImage& all) { all.deleteValue(*m_key, name); });
}

bool Regedit::deleteKey(Root /*root*/, const QString& path) {
    return change([&](RegistryImage& all) { all.deleteKey(path); });
}

QString Regedit::p_defPrivateFolders() const {
    const auto all = load();
    const auto found = all ? all->value(publicKey(), folderName()) : std::nullopt;
    const auto* text = found ? std::get_if<QString>(&*found) : nullptr;
    return text != nullptr && !text->isEmpty() ? *text : m_folders.documents;
}

bool Regedit::p_defPrivateFolders(const QString& folder) {
    return change([&](RegistryImage& all) {
        all.createKey(publicKey());
        all.setValue(publicKey(), folderName(), folder);
    });
}

}  // namespace keeper

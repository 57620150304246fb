// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/user_folders.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace keeper {
namespace {

QString baseFolder(const char* variable, const QString& fallback) {
    const QString value = QFile::decodeName(qgetenv(variable));
    return value.startsWith(u'/') ? QDir::cleanPath(value) : fallback;
}

}  // namespace

QString UserFolders::registry() const {
    return configuration + QStringLiteral("/morvane-keeper");
}

QString UserFolders::autostart() const {
    return configuration + QStringLiteral("/autostart");
}

UserFolders UserFolders::ofSystem() {
    const auto location = [](QStandardPaths::StandardLocation which) {
        return QStandardPaths::writableLocation(which);
    };
    UserFolders folders;
    folders.home = QDir::homePath();
    folders.desktop = location(QStandardPaths::DesktopLocation);
    folders.documents = location(QStandardPaths::DocumentsLocation);
    folders.pictures = location(QStandardPaths::PicturesLocation);
    folders.music = location(QStandardPaths::MusicLocation);
    folders.videos = location(QStandardPaths::MoviesLocation);
    folders.configuration =
        baseFolder("XDG_CONFIG_HOME", folders.home + QStringLiteral("/.config"));
    folders.data = baseFolder("XDG_DATA_HOME", folders.home + QStringLiteral("/.local/share"));
    folders.state = baseFolder("XDG_STATE_HOME", folders.home + QStringLiteral("/.local/state"));
    folders.temporary = QDir::tempPath();
    return folders;
}

}  // namespace keeper

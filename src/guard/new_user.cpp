// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/new_user.h"

#include <QFile>
#include <QFileInfo>

#include "app/private_folder.h"
#include "app/system.h"
#include "app/users.h"
#include "crypto/code_page.h"
#include "platform/durable_file.h"
#include "store/sealed_database.h"

namespace keeper {
namespace {

constexpr int kShortestName = 2;
// Name, prefix and ".kvdb" must fit the 255 bytes of a file name, three bytes a Chinese character.
constexpr int kLongestNameBytes = 200;
constexpr int kShortestKey = 6;
constexpr int kLongestLoginKey = 30;
constexpr int kLongestIndependentPassword = 32;

const QString kForbidden = QStringLiteral("\\/:*?\"<>|");
const QString kForbiddenList = QStringLiteral("\\ / : * ? \" < > |");

bool hasForbidden(const QString& text) {
    // A tab or another control character would break the record of the user apart.
    return std::any_of(text.begin(), text.end(), [](QChar unit) {
        return kForbidden.contains(unit) || unit.category() == QChar::Other_Control;
    });
}

/// Example content that a distribution may lay beside the program. A new user is complete without.
void copyExample(const QString& programFolder, const QString& name, const QString& folder) {
    if (programFolder.isEmpty()) {
        return;
    }
    // A package keeps its programs apart from its data.
    for (const char* place : {"/", "/../share/morvane-keeper/"}) {
        const QString source = programFolder + QLatin1String(place) + name;
        if (QFileInfo(source).isFile()) {
            QFile::copy(source, folder + u'/' + name);
            return;
        }
    }
}

}  // namespace

bool CheckNewUserName(const QString& name, const QString& parentFolder, const Users& users,
                      QString& message) {
    message.clear();
    const QString folder = parentFolder + QLatin1Char('/') + privatefolder::prefix() + name;
    if (name.trimmed().isEmpty()) {
        message = QStringLiteral("用户名不能为空或全为空格！");
    } else if (name.size() < kShortestName) {
        message = QStringLiteral("用户名的长度不要小于2个字符。");
    } else if (hasForbidden(name)) {
        message = QStringLiteral("文件名不能包含下列任何字符：\r\n") + kForbiddenList;
    } else if (name.toUtf8().size() > kLongestNameBytes) {
        message = QStringLiteral("用户名太长，请缩短后再试。");
    } else if (QFileInfo::exists(folder)) {
        message = QStringLiteral("私人文件夹 ") + folder +
                  QStringLiteral("\r\n已存在，请改用其它用户名。");
    } else if (users.Exists(name)) {
        message = QStringLiteral("已有用户【") + name +
                  QStringLiteral("】在本机登录，请改用其它用户名。");
    }
    return message.isEmpty();
}

bool CheckSecretTip(const QString& text, QString& message) {
    message.clear();
    if (hasForbidden(text)) {
        message = QStringLiteral("提示文本不能包含下列任何字符：\r\n") + kForbiddenList;
    }
    return message.isEmpty();
}

bool checkCharacters(const QString& secret, QString& message) {
    message = isInCodePage(secret)
                  ? QString()
                  : QStringLiteral("输入的内容含有无法区分的字符（如表情符号），请改用其它字符！");
    return message.isEmpty();
}

bool checkNewLoginKey(const QString& key, QString& message) {
    message.clear();
    if (key.size() < kShortestKey || key.size() > kLongestLoginKey) {
        message = QStringLiteral("登录密钥的有效长度为6-30位！");
    }
    return message.isEmpty() && checkCharacters(key, message);
}

bool checkNewIndependentPassword(const QString& password, QString& message) {
    message.clear();
    if (password.size() > kLongestIndependentPassword) {
        message = QStringLiteral("独立密码的长度不能超过32位！");
    } else if (!password.isEmpty() && password.size() < kShortestKey) {
        message = QStringLiteral("独立密码在非空时的不能小于6位！");
    }
    return message.isEmpty() && checkCharacters(password, message);
}

bool CreateUser(System& system, SealedDatabase& database, const QString& programFolder,
                const QDateTime& now) {
    ensurePrivateFolder(system.p_privateFolder());
    if (!system.RepairPrivateFolder() || !database.CreateWorkingCopy(now)) {
        return false;
    }
    copyExample(programFolder, QStringLiteral("软件说明.txt"), system.p_defEncrypted());
    copyExample(programFolder, QStringLiteral("仙本那.jpg.aes"), system.p_defBGPictures());
    return true;
}

}  // namespace keeper

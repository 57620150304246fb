// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <array>

#include "cli/console.h"
#include "cli/database_commands.h"
#include "cli/database_copy.h"
#include "cli/known_users.h"
#include "platform/clock.h"
#include "store/column_cipher.h"
#include "store/entries.h"
#include "store/numbering.h"

namespace keeper::cli {
namespace {

/// Titles are in clear in the opened database, whatever its columns hold.
class NoColumnCipher final : public ColumnKey {
  public:
    [[nodiscard]] bool p_idpPwdSwitch() const override { return false; }
    [[nodiscard]] QString p_plainIdpPwd() const override { return {}; }
};

}  // namespace

int runUsers() {
    const KnownUsers known;
    const Users& users = known.users();
    QStringList lines;
    for (const QString& name : users.names()) {
        const auto user = users.GetUser(name);
        const QString mark =
            name == users.p_defaultUserName() ? QStringLiteral("*") : QStringLiteral(" ");
        // Who hides the path on the login form does not want it told here either.
        lines << mark + u' ' + printable(name) +
                     (user->p_hideDBPath() ? QString() : u'\t' + printable(user->p_kvdbFile()));
    }
    printLines(lines);
    return kDone;
}

int runLs(const Arguments& arguments) {
    static const std::array<QString, 3> kKinds{
        QStringLiteral("网络对象"), QStringLiteral("应用程序"), QStringLiteral("用户文件")};
    DatabaseCopy copy(arguments.paths.first(), arguments.keyFile);
    SystemClock clock;
    const NoColumnCipher noCipher;
    ColumnCipher columns(noCipher, copy.cipher());
    Entries entries({copy.connection(), copy.prompt(), clock, columns});
    QStringList lines;
    entries.Display([&lines](const EntryLine& line) {
        const QString number = line.number();
        const auto kind = static_cast<std::size_t>(GetItemKeyType(number));
        lines << number + u'\t' + kKinds.at(kind) + u'\t' + printable(EntryLine::text(line.title));
    });
    if (!copy.prompt().message.isEmpty()) {
        throw Exit(kFailed, withoutTag(copy.prompt().message));
    }
    copy.heedSignals();
    printLines(lines);
    return kDone;
}

}  // namespace keeper::cli

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/console.h"
#include "cli/database_commands.h"
#include "cli/program.h"

int main(int argc, char** argv) {
    using namespace keeper::cli;
    return runProgram(argc, argv, [](const Arguments& arguments) {
        switch (arguments.command) {
            case Command::Users:
                return runUsers();
            case Command::Ls:
                return runLs(arguments);
            case Command::Info:
                return runInfo(arguments);
            case Command::Verify:
                return runVerify(arguments);
            case Command::Help:
            case Command::Version:
            case Command::Encrypt:
            case Command::Decrypt:
            case Command::EncryptText:
            case Command::DecryptText:
            case Command::Digest:
                break;
        }
        throw Exit(kWrongUsage, QStringLiteral("请使用 morvane-cli"));
    });
}

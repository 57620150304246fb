// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/program.h"

namespace keeper::cli {
namespace {

/// The commands that look into a database live in a program of their own: its libraries would
/// lengthen every start for the many short runs on small files.
[[noreturn]] void becomeDatabaseProgram(char** argv) {
    const QString self = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
    const QByteArray program = QFile::encodeName(QFileInfo(self).absolutePath() +
                                                 QStringLiteral("/" KEEPER_DATABASE_PROGRAM));
    ::execv(program.constData(), argv);
    throw Exit(kFailed,
               QStringLiteral("无法启动 %1：%2")
                   .arg(QFile::decodeName(program), QString::fromLocal8Bit(std::strerror(errno))));
}

}  // namespace
}  // namespace keeper::cli

int main(int argc, char** argv) {
    using namespace keeper::cli;
    return runProgram(argc, argv, [argv](const Arguments& arguments) {
        switch (arguments.command) {
            case Command::Help:
                writeAll(STDOUT_FILENO, usageText().toUtf8());
                return kDone;
            case Command::Version:
                writeAll(STDOUT_FILENO, "morvane-cli " KEEPER_VERSION "\n");
                return kDone;
            case Command::Encrypt:
            case Command::Decrypt:
                return runFileCommand(arguments);
            case Command::EncryptText:
            case Command::DecryptText:
                return runTextCommand(arguments);
            case Command::Digest:
                return runDigestCommand(arguments);
            case Command::Users:
            case Command::Ls:
            case Command::Info:
            case Command::Verify:
                becomeDatabaseProgram(argv);
        }
        return kFailed;
    });
}

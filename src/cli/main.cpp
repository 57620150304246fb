// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <sys/resource.h>
#include <unistd.h>

#include <QFile>

#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "crypto/cryptor_host.h"

namespace keeper::cli {

namespace {

int run(const QStringList& words) {
    const Arguments arguments = parseArguments(words);
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
    }
    return kFailed;
}

}  // namespace

}  // namespace keeper::cli

int main(int argc, char** argv) {
    using namespace keeper::cli;
    // A crash must not leave a key in a core file.
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    try {
        QStringList words;
        for (int i = 1; i < argc; ++i) {
            words << QFile::decodeName(argv[i]);
        }
        return run(words);
    } catch (const Exit& exit) {
        if (!exit.message().isEmpty()) {
            printError(exit.message());
        }
        return exit.status();
    } catch (const keeper::CryptorError& error) {
        printError(error.description());
        return kFailed;
    } catch (const std::exception& error) {
        printError(QString::fromLocal8Bit(error.what()));
        return kFailed;
    }
}

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "cli/program.h"

#include <sys/resource.h>

#include <QFile>

#include "cli/console.h"
#include "crypto/cryptor_host.h"

namespace keeper::cli {

int runProgram(int argc, char** argv, const std::function<int(const Arguments&)>& command) {
    // A crash must not leave a key in a core file.
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    try {
        QStringList words;
        for (int i = 1; i < argc; ++i) {
            words << QFile::decodeName(argv[i]);
        }
        return command(parseArguments(words));
    } catch (const Exit& exit) {
        if (!exit.message().isEmpty()) {
            printError(exit.message());
        }
        return exit.status();
    } catch (const CryptorError& error) {
        printError(error.description());
        return kFailed;
    } catch (const std::exception& error) {
        printError(QString::fromLocal8Bit(error.what()));
        return kFailed;
    }
}

}  // namespace keeper::cli

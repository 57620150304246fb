// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <unistd.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/progress_bar.h"
#include "cli/quiet_host.h"
#include "crypto/cryptor1.h"
#include "crypto/cryptor2.h"
#include "crypto/posix_file.h"

namespace keeper::cli {

namespace {

QString md5Of(const QString& path) {
    QuietHost host;
    ProgressBar bar;
    Cryptor1 cryptor(host);
    cryptor.DisplayProgress = [&bar](float percent) { bar.show(percent); };
    QString digest;
    return cryptor.hashFile(path, digest) ? digest : QString();
}

QString sha1Of(const QString& path) {
    Cryptor2::BusyFlag busy;
    return Cryptor2(busy).hashFile(path);
}

}  // namespace

int runDigestCommand(const Arguments& arguments) {
    int status = kDone;
    for (const QString& path : arguments.paths) {
        try {
            // The digests fail without a word: opening the file here tells the reason.
            const PosixFile file = PosixFile::openSource(path);
            const bool isMd5 = arguments.algorithm == Algorithm::Md5;
            const QString digest = isMd5 ? md5Of(path) : sha1Of(path);
            if (digest.isEmpty()) {
                throw Exit(kFailed, isMd5 ? QStringLiteral("无法读取，或文件超过 256 MiB，"
                                                           "md5 摘要不支持")
                                          : QStringLiteral("无法读取"));
            }
            writeAll(STDOUT_FILENO, QStringLiteral("%1  %2\n").arg(digest, path).toUtf8());
        } catch (const CryptorError& error) {
            printError(QStringLiteral("%1：%2").arg(path, error.description()));
            status = kFailed;
        } catch (const Exit& exit) {
            printError(QStringLiteral("%1：%2").arg(path, exit.message()));
            status = kFailed;
        }
    }
    return status;
}

}  // namespace keeper::cli

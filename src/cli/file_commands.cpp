// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QFile>
#include <memory>
#include <vector>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/key_entry.h"
#include "cli/progress_bar.h"
#include "cli/quiet_host.h"
#include "cli/signal_watch.h"
#include "crypto/cryptor3.h"
#include "crypto/cryptor5.h"
#include "crypto/posix_file.h"
#include "crypto/replacement_file.h"
#include "crypto/secure_wipe.h"

namespace keeper::cli {

namespace {

/// Runs `work`; a failure of the file layer, which knows no names, is told with the path.
template <typename Work>
auto about(const QString& path, Work&& work) {
    try {
        return work();
    } catch (const CryptorError& error) {
        throw Exit(kFailed, QStringLiteral("%1：%2").arg(path, error.description()));
    }
}

/// One file on its way from source to target.
class FileJob {
  public:
    explicit FileJob(const Arguments& arguments)
        : m_arguments(arguments),
          m_isEncryption(arguments.command == Command::Encrypt),
          m_source(arguments.paths[0]),
          m_target(arguments.paths[1]) {}

    void run();

  private:
    void checkPaths() const;
    void cipherAes(const QString& key);
    void cipherXor(const QString& key);
    void checkPadding(Cryptor3& cipher, const QString& key, const QString& output) const;
    template <typename Cipher>
    void watch(Cipher& cipher);
    [[noreturn]] void fail(int number, const QString& reason);
    [[nodiscard]] QString culprit(int number) const;

    const Arguments& m_arguments;
    bool m_isEncryption;
    const QString& m_source;
    const QString& m_target;
    SignalWatch m_signals;
    QuietHost m_host;
};

void FileJob::run() {
    checkPaths();
    QString key = obtainKey(m_arguments.keyFile, m_isEncryption, m_signals);
    const WipeGuard wipe(key);
    if (m_arguments.cipher == Cipher::Aes) {
        cipherAes(key);
    } else {
        cipherXor(key);
    }
}

/// What can be refused before a key is asked for.
void FileJob::checkPaths() const {
    const PosixFile source = about(m_source, [&] { return PosixFile::openSource(m_source); });
    if (source.isAt(m_target)) {
        throw Exit(kFailed, QStringLiteral("%1：源文件与目标文件是同一个文件").arg(m_source));
    }
    if (source.size() == 0) {
        throw Exit(kFailed, QStringLiteral("%1：文件是空的").arg(m_source));
    }
    if (!m_arguments.force && QFile::exists(m_target)) {
        throw Exit(kFailed, QStringLiteral("%1：文件已存在（--force 覆盖它）").arg(m_target));
    }
}

/// Shows the progress, and passes on what came from the keyboard.
template <typename Cipher>
void FileJob::watch(Cipher& cipher) {
    m_host.onTurn = [this, &cipher] {
        if (m_signals.pending() != 0) {
            cipher.p_stopRequested(true);
        }
    };
}

/// The path that a failure is about. The source was opened before: what goes wrong with names and
/// rights after that goes wrong at the target.
QString FileJob::culprit(int number) const {
    switch (number) {
        case PosixFile::PathNotFound:
        case PosixFile::AlreadyExists:
        case PosixFile::DiskFull:
        case PosixFile::AccessRefused:
        case PosixFile::NotAFile:
            return m_target;
        case PosixFile::DeviceError:
            return m_source + QStringLiteral(" → ") + m_target;
        default:
            return m_source;
    }
}

void FileJob::fail(int number, const QString& reason) {
    if (m_signals.pending() != 0) {
        throw Exit(128 + m_signals.pending(), QStringLiteral("已中断，%1 未改变").arg(m_source));
    }
    throw Exit(kFailed, QStringLiteral("%1：%2").arg(culprit(number), reason));
}

/// The class writes to a file beside the target, which takes the target's place when it is whole:
/// even a power cut leaves no file that only looks complete.
void FileJob::cipherAes(const QString& key) {
    Cryptor3 cipher(m_host);
    watch(cipher);
    const auto made = about(m_target, [&] { return std::make_unique<ReplacementFile>(m_target); });
    ReplacementFile& output = *made;
    {
        ProgressBar bar;
        cipher.DisplayProgress = [&bar](float percent) { bar.show(percent); };
        const bool isDone = m_isEncryption
                                ? cipher.EncryptFile(m_source, output.path(), key, false)
                                : cipher.DecryptFile(m_source, output.path(), key, false);
        if (!isDone) {
            // The message of a refused access speaks of the source, whichever file it was.
            fail(cipher.lastFailureNumber(), cipher.lastFailure());
        }
    }
    if (!m_isEncryption) {
        checkPadding(cipher, key, output.path());
    }
    using Flush = ReplacementFile::Flush;
    using Existing = ReplacementFile::Existing;
    const bool mustLast = m_arguments.deleteSource || m_arguments.force;
    about(m_target, [&] {
        // What comes out of a sealed file is private until its owner says otherwise.
        output.replaceTarget(m_isEncryption ? PosixFile::openSource(m_source).mode() : 0600,
                             mustLast ? Flush::Yes : Flush::No,
                             m_arguments.force ? Existing::Replace : Existing::Keep);
    });
    if (m_arguments.deleteSource) {
        about(m_source, [&] { PosixFile::deleteFile(m_source); });
    }
}

/// The length byte alone passes one wrong key in ten. The bytes before it are always zero in a
/// file of ours: enciphering the end of the result again must give the last block of the source.
void FileJob::checkPadding(Cryptor3& cipher, const QString& key, const QString& output) const {
    const int bits = Cryptor3::sizeForKey(key.size());
    const auto block = static_cast<std::int64_t>(bits / 8);
    PosixFile sealed = PosixFile::openSource(m_source);
    PosixFile plain = PosixFile::openSource(output);
    std::vector<std::uint8_t> expected(static_cast<std::size_t>(block));
    std::vector<std::uint8_t> tail(static_cast<std::size_t>(plain.size() % block));
    const WipeGuard wipe(tail);
    sealed.readAt(sealed.size() - block, expected);
    plain.readAt(plain.size() - plain.size() % block, tail);
    std::vector<std::uint8_t> again;
    cipher.SetCipherKeyString(key, bits, bits, /*isHex=*/false);
    cipher.ArrayEncrypt(tail, again, /*appendSize=*/true, bits);
    if (again != expected) {
        throw Exit(kFailed, QStringLiteral("%1：密钥错误，或文件已损坏").arg(m_source));
    }
}

void FileJob::cipherXor(const QString& key) {
    Cryptor5 cipher(m_host);
    watch(cipher);
    {
        ProgressBar bar;
        cipher.DisplayProgress = [&bar](float percent) { bar.show(percent); };
        const bool isDone = m_isEncryption ? cipher.EncryptFile(m_source, m_target, key)
                                           : cipher.DecryptFile(m_source, m_target, key);
        if (!isDone) {
            fail(numberInTag(m_host.message), withoutTag(m_host.message));
        }
    }
    printError(QFile::exists(m_source) ? QStringLiteral("注意：未能删除源文件 %1").arg(m_source)
                                       : QStringLiteral("注意：xor 已取走源文件 %1").arg(m_source));
}

}  // namespace

int runFileCommand(const Arguments& arguments) {
    FileJob(arguments).run();
    return kDone;
}

}  // namespace keeper::cli

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace keeper::cli {

enum class Command {
    Help,
    Version,
    Encrypt,
    Decrypt,
    EncryptText,
    DecryptText,
    Digest,
    Users,
    Ls,
    Info,
    Verify
};
enum class Cipher { Aes, Xor };
enum class Algorithm { Md5, Sha1 };

/// What the command line asks for.
struct Arguments {
    Command command = Command::Help;
    Cipher cipher = Cipher::Aes;
    Algorithm algorithm = Algorithm::Md5;
    /// "-" is standard input; none asks on the terminal.
    std::optional<QString> keyFile;
    bool deleteSource = false;
    bool force = false;
    /// Source and target of a file command, the files of a digest, the database of a look.
    QStringList paths;
};

/// Throws Exit with kWrongUsage and what is wrong.
[[nodiscard]] Arguments parseArguments(const QStringList& words);

/// The text of --help.
[[nodiscard]] QString usageText();

}  // namespace keeper::cli

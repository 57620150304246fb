// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/failure.h"

#include <cerrno>
#include <system_error>

#include "crypto/cryptor_host.h"
#include "platform/database.h"

namespace keeper {
namespace {

/// In words for a person, with the failed step and the system's own text behind them.
QString systemErrorText(const std::system_error& error) {
    QString detail = QString::fromLocal8Bit(error.what());
    switch (error.code().value()) {
        case ENOSPC:
        case EDQUOT:
            return QStringLiteral("磁盘空间不足。\r\n") + detail;
        case EACCES:
        case EPERM:
            return QStringLiteral("拒绝访问。\r\n") + detail;
        case EROFS:
            return QStringLiteral("磁盘为只读。\r\n") + detail;
        case EIO:
            return QStringLiteral("磁盘读写错误。\r\n") + detail;
        case ENOENT:
            return QStringLiteral("文件或文件夹不存在。\r\n") + detail;
        case EWOULDBLOCK:
            return QStringLiteral("正被另一程序使用。\r\n") + detail;
        default:
            return detail;
    }
}

}  // namespace

Failure currentFailure() {
    try {
        throw;
    } catch (const DatabaseError& error) {
        return {error.number(), error.description()};
    } catch (const CryptorError& error) {
        return {error.number(), error.description()};
    } catch (const KeeperError& error) {
        return {error.number(), error.description()};
    } catch (const std::system_error& error) {
        return {error.code().value(), systemErrorText(error)};
    } catch (const std::exception& error) {
        return {0, QString::fromUtf8(error.what())};
    } catch (...) {
        return {0, QString()};
    }
}

QString failureText(const Failure& failure, const QString& where) {
    return QStringLiteral("[%1]%2:\r\n%3")
        .arg(QString::number(failure.number), where, failure.description);
}

}  // namespace keeper

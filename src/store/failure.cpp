// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/failure.h"

#include "crypto/cryptor_host.h"
#include "platform/database.h"

namespace keeper {

Failure currentFailure() {
    try {
        throw;
    } catch (const DatabaseError& error) {
        return {error.number(), error.description()};
    } catch (const CryptorError& error) {
        return {error.number(), error.description()};
    } catch (const KeeperError& error) {
        return {error.number(), error.description()};
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

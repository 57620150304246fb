// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/dispatcher.h"

#include <QFile>
#include <QFileInfo>
#include <utility>

#include "crypto/secure_wipe.h"
#include "platform/durable_file.h"
#include "platform/file_hold.h"
#include "platform/prompt.h"
#include "store/connecting_display.h"
#include "store/failure.h"
#include "store/key_holder.h"
#include "store/sealed_database.h"
#include "store/sealed_file.h"

namespace keeper {
namespace {

bool isSameFile(const QString& left, const QString& right) {
    const QFileInfo first(left);
    const QFileInfo second(right);
    // The canonical path of what does not exist yet is empty.
    const QString canonical = first.canonicalFilePath();
    return first.absoluteFilePath() == second.absoluteFilePath() ||
           (!canonical.isEmpty() && canonical == second.canonicalFilePath());
}

/// The copy goes on every way out.
class DiscardOnExit {
  public:
    explicit DiscardOnExit(SealedDatabase& sealed) : m_sealed(sealed) {}
    ~DiscardOnExit() { m_sealed.DiscardWorkingCopy(); }
    DiscardOnExit(const DiscardOnExit&) = delete;
    DiscardOnExit& operator=(const DiscardOnExit&) = delete;

  private:
    SealedDatabase& m_sealed;
};

}  // namespace

Dispatcher::Dispatcher(const Ports& ports, QString stateFolder, QString programVersion,
                       DatabaseOptions options)
    : m_ports(ports),
      m_stateFolder(std::move(stateFolder)),
      m_programVersion(std::move(programVersion)),
      m_options(options) {}

bool Dispatcher::Dispatch(const QString& target) {
    Prompt& prompt = m_ports.guard.prompt;
    if (isSameFile(target, m_ports.keys.p_kvdbFile()) ||
        isSameFile(target, m_ports.guard.database.path())) {
        prompt.messageBox(QStringLiteral("不能分派到正在使用的数据库文件！"),
                          Prompt::Icon::Exclamation);
        return false;
    }
    if (isFileHeld(target)) {
        prompt.messageBox(QStringLiteral("目标文件正被另一个会话使用，不能分派到它！"),
                          Prompt::Icon::Exclamation);
        return false;
    }
    return guarded(prompt, QStringLiteral("cSWProtect.Dispatch"), false, [&] {
        ensurePrivateFolder(m_stateFolder);
        removeLeftovers(m_stateFolder, QString(), kDispatchingSuffix);
        const QString copyPath =
            makeFreshFile(m_stateFolder, QString(), kDispatchingSuffix, m_ports.guard.random);
        Database copy(m_options);
        SealedDatabase sealed(m_ports.keys, m_ports.cipher, copy, prompt, m_ports.guard.random,
                              m_ports.display, m_stateFolder);
        sealed.GetResumeTempFile(copyPath);
        const DiscardOnExit discard(sealed);

        QString key = m_ports.keys.p_plainLgnKey();
        const WipeGuard wipeKey(key);
        QString password = SealedDatabase::GetAccessDBSec(false, key);
        const WipeGuard wipePassword(password);
        QFile::remove(copyPath);
        m_ports.guard.database.exportTo(copyPath, password);
        QString message;
        if (!sealed.ConnAccess(password, message)) {
            throw KeeperError(0, QStringLiteral("Dispatch"), message);
        }
        return release(copy) &&
               sealed.CryptKVDB(false, static_cast<int>(CryptMode::SealForDispatch),
                                /*closeDialog=*/true, target);
    });
}

bool Dispatcher::release(Database& copy) {
    const SWProtect::Ports& live = m_ports.guard;
    SWProtect guard({copy, live.clock, live.random, live.prompt, live.osInfo, live.upgrades},
                    m_programVersion);
    return guard.ReadDB() && (!guard.p_isBrchConfined() || guard.LockOntoBrch(false)) &&
           (guard.deadCount() == guard.p_lifetimeDays() ||
            guard.SetBranchDeadCount(guard.p_lifetimeDays()));
}

}  // namespace keeper

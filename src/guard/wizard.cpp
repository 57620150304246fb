// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/wizard.h"

#include <QDir>
#include <QFileInfo>
#include <array>

#include "app/private_folder.h"
#include "app/regedit.h"
#include "app/system.h"
#include "app/users.h"
#include "crypto/secure_wipe.h"
#include "guard/new_user.h"
#include "guard/sw_protect.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "platform/random.h"
#include "store/companions.h"
#include "store/connecting_display.h"
#include "store/failure.h"
#include "store/sealed_database.h"

namespace keeper {
namespace {

constexpr int kLastPage = 3;
const QString kSuggestedName = QStringLiteral("Demo");

[[noreturn]] void fail(const QString& source, const QString& description) {
    throw KeeperError(1, source, description);
}

}  // namespace

Wizard::Wizard(const Ports& ports) : m_ports(ports) {}

Wizard::~Wizard() {
    wipe();
}

void Wizard::wipe() {
    secureWipe(m_state.loginKey);
    secureWipe(m_state.independentPassword);
    secureWipe(m_state.summary);
}

void Wizard::load() {
    wipe();
    m_state = WizardState();
    m_state.parentFolder = m_ports.registry.p_defPrivateFolders();
    m_state.loginKey = sixDigits();
    do {
        m_state.independentPassword = sixDigits();
    } while (m_state.independentPassword == m_state.loginKey);
    m_resultValue = 0;
    m_isClosed = false;
    showPage(0);
}

QString Wizard::sixDigits() {
    return QStringLiteral("%1").arg(m_ports.random.below(1'000'000), 6, 10, QLatin1Char('0'));
}

QString Wizard::pageText(int page) {
    static const std::array<QString, kLastPage + 1> kTexts{
        QStringLiteral("　　请设置您的用户名，管理器将用来在指定路径创建您的私人文件夹。\n"
                       "　　如果已经有其它用户在本机新建或登录过，请与他们的名字区别开来。"),
        QStringLiteral("　　以下是密码数据库的初始登录密钥，密钥提示会以工具提示文本的方式出现在密"
                       "钥文本框中。"),
        QStringLiteral("　　以下是用于内部安全的初始独立密码，密码提示会以工具提示文本的方式出现在"
                       "密码文本框中。\n"
                       "　　如果您不需要，可以设为空。"),
        QStringLiteral("　　感谢您的使用！请牢记您的密钥和密码。")};
    return kTexts.at(static_cast<std::size_t>(page));
}

void Wizard::showPage(int page) {
    static const std::array<QString, kLastPage + 1> kCaptions{
        QStringLiteral("设置用户名(1/4)"), QStringLiteral("设置登录密钥(2/4)"),
        QStringLiteral("设置独立密码(3/4)"), QStringLiteral("完成(4/4)")};
    m_state.page = page;
    m_state.frameCaption = kCaptions.at(static_cast<std::size_t>(page));
    m_state.nextCaption =
        page == kLastPage ? QStringLiteral("完成(&F)") : QStringLiteral("下一步(&N)");
    m_state.canGoBack = page > 0;
    secureWipe(m_state.summary);
    if (page == kLastPage) {
        m_state.summary = QStringLiteral("用户名：") + m_state.userName +
                          QStringLiteral("\r\n私人文件夹：") + m_state.privateFolder +
                          QStringLiteral("\r\n登录密钥：") + m_state.loginKey +
                          QStringLiteral("\r\n独立密码：") + m_state.independentPassword;
    }
    if (changed) {
        changed();
    }
}

void Wizard::setUserName(const QString& name) {
    m_state.userName = name;
    m_state.privateFolder =
        name.isEmpty() ? QString()
                       : m_state.parentFolder + QLatin1Char('/') + privatefolder::prefix() + name;
    if (changed) {
        changed();
    }
}

void Wizard::cmdOpen() {
    (void)guardedRun(
        m_ports.prompt, QStringLiteral("frmWizard.cmdOpen_Click"),
        [&] {
            const QString suggested =
                m_state.parentFolder + QLatin1Char('/') +
                (m_state.userName.isEmpty() ? kSuggestedName : m_state.userName);
            const QString path =
                m_ports.prompt.saveFile(QStringLiteral("指定用户名及其路径"), suggested, QString());
            if (path.isEmpty()) {
                return;
            }
            m_state.parentFolder = QFileInfo(path).absolutePath();
            setUserName(QFileInfo(path).fileName());
        },
        Prompt::Icon::Exclamation);
}

bool Wizard::checkPage(QString& message) const {
    switch (m_state.page) {
        case 0:
            if (m_state.userName.isEmpty()) {
                message = QStringLiteral("请先设置用户名。");
                return false;
            }
            return CheckNewUserName(m_state.userName, m_state.parentFolder, m_ports.users, message);
        case 1:
            return checkNewLoginKey(m_state.loginKey, message) &&
                   CheckSecretTip(m_state.loginKeyTip, message);
        case 2:
            return checkNewIndependentPassword(m_state.independentPassword, message) &&
                   CheckSecretTip(m_state.independentPasswordTip, message);
        default:
            return true;
    }
}

void Wizard::cmdNext() {
    QString message;
    if (!checkPage(message)) {
        m_ports.prompt.messageBox(message, Prompt::Icon::Exclamation);
        return;
    }
    if (m_state.page < kLastPage) {
        showPage(m_state.page + 1);
    } else {
        finish();
    }
}

void Wizard::cmdBack() {
    if (m_state.page > 0) {
        showPage(m_state.page - 1);
    }
}

void Wizard::cmdCancel() {
    m_isClosed = true;
    wipe();
    if (changed) {
        changed();
    }
}

void Wizard::finish() {
    // The name was free when the first page was left; a folder that appeared since is not ours.
    QString message;
    if (!CheckNewUserName(m_state.userName, m_state.parentFolder, m_ports.users, message)) {
        m_ports.prompt.messageBox(message, Prompt::Icon::Exclamation);
        return;
    }
    m_state.isWorking = true;
    if (changed) {
        changed();
    }
    try {
        build();
        m_resultValue = 2;
        m_isClosed = true;
        wipe();
    } catch (const KeeperError& error) {
        undo({error.number(), error.description()}, error.source());
    } catch (...) {
        undo(currentFailure(), QStringLiteral("创建"));
    }
    m_state.isWorking = false;
    if (changed) {
        changed();
    }
}

void Wizard::undo(const Failure& failure, const QString& source) {
    m_ports.prompt.messageBox(failureText(failure, source), Prompt::Icon::Critical);
    m_ports.system.ClearUser(/*deleteFolder=*/true);
    m_ports.system.setUser(nullptr);
}

void Wizard::build() {
    System& system = m_ports.system;
    // What is undone after a failure must not be the copy of an earlier session.
    m_ports.database.GetResumeTempFile(QString());
    const auto user = m_ports.users.makeUser();
    user->p_privateFolder(m_state.privateFolder);
    system.setUser(user);
    system.p_lgnKeyTip(m_state.loginKeyTip);
    user->p_plainLgnKey(m_state.loginKey);
    system.SetHashIdpPwd(m_state.independentPassword);
    system.settings().p_idpPwdTip(m_state.independentPasswordTip);

    QString message;
    if (!CreateUser(system, m_ports.database, m_ports.programFolder, m_ports.clock.now())) {
        fail(QStringLiteral("创建"), QStringLiteral("创建私人文件夹或密码数据库失败！"));
    }
    if (!m_ports.database.ConnAccess(SealedDatabase::GetAccessDBSec(false, QString()), message)) {
        fail(QStringLiteral("连接"), message);
    }
    if (!m_ports.database.InitLgnKey(m_state.loginKey)) {
        fail(QStringLiteral("密码"), QStringLiteral("设置数据库密码失败！"));
    }
    if (!system.NewBuild() || !m_ports.guard.ReadDB() || !m_ports.guard.NewBuild()) {
        fail(QStringLiteral("创建"), QStringLiteral("写入新密码数据库失败！"));
    }
    if (m_state.userName != kSuggestedName &&
        !m_ports.files.UpdateFilePathOnUserNameChange(kSuggestedName, m_state.userName)) {
        fail(QStringLiteral("创建"), QStringLiteral("写入新密码数据库失败！"));
    }
    // A first sealed file at once: the login after a crash looks for it before it heals the
    // session.
    if (!m_ports.database.CryptKVDB(false, static_cast<int>(CryptMode::Seal), /*closeDialog=*/true,
                                    system.p_kvdbFile())) {
        fail(QStringLiteral("创建"), QStringLiteral("写入新密码数据库失败！"));
    }
    // Nobody else can know of the file yet.
    m_ports.database.HoldSealedFile();
    QString password = SealedDatabase::GetAccessDBSec(false, m_state.loginKey);
    const WipeGuard wipePassword(password);
    if (!m_ports.database.ConnAccess(password, message)) {
        fail(QStringLiteral("连接"), message);
    }
    m_ports.registry.p_defPrivateFolders(m_state.parentFolder);
}

}  // namespace keeper

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/session_flow.h"

#include <QFileInfo>
#include <QScopeGuard>
#include <utility>

#include "app/file_operator.h"
#include "app/private_folder.h"
#include "store/failure.h"

namespace keeper {

Main::Main(Prompt& prompt, SessionForms& forms, SessionRoad& road, StartChecks checks)
    : m_prompt(prompt), m_forms(forms), m_road(road), m_checks(std::move(checks)) {}

bool Main::run(const QString& commandLine) {
    if (!RunPrerequisiteChecks()) {
        return false;
    }
    QString startFolder;
    if (!Prepare4Command(commandLine, startFolder)) {
        return false;
    }
    m_forms.setStartFolder(startFolder);

    bool resumed = false;
    for (bool isConnected = false; !isConnected;) {
        switch (m_forms.showLogin()) {
            case SessionForms::LoginResult::End:
                return false;
            case SessionForms::LoginResult::Wizard:
                resumed = false;
                isConnected = m_forms.showWizard();
                break;
            case SessionForms::LoginResult::LogIn:
                isConnected = m_road.ConnectDatabase(resumed);
                if (isConnected) {
                    m_road.ReportAfterLogin(resumed);
                }
                break;
        }
    }
    m_road.RecordLogin(resumed);
    m_forms.showMain();
    return true;
}

bool Main::RunPrerequisiteChecks() {
    QString refusal;
    QStringList notices;
    {
        // Also when a check throws: the splash must not stand before what is told of it.
        const auto closing = qScopeGuard([this] { m_forms.closeSplash(); });
        m_forms.showSplash();
        refusal = refusalOfChecks();
        if (refusal.isEmpty()) {
            notices = m_checks.initUsers();
        }
    }
    for (const QString& notice : notices) {
        m_prompt.messageBox(notice, Prompt::Icon::Exclamation);
    }
    if (!refusal.isEmpty()) {
        m_prompt.messageBox(refusal, Prompt::Icon::Exclamation);
    }
    return refusal.isEmpty();
}

QString Main::refusalOfChecks() {
    if (!m_checks.claimInstance()) {
        return QStringLiteral("已有实例在运行，本程序每次只允许一个用户登录。");
    }
    if (!m_checks.initializeSystemInfo()) {
        return QStringLiteral("获取操作系统的环境信息出错，程序无法正常使用！");
    }
    if (QString reason; !IsDatabaseDriverInstalled(reason)) {
        return QStringLiteral("您的计算机尚未正确配置SQLCipher 数据库引擎，加载失败。\r\n%1")
            .arg(reason);
    }
    return {};
}

bool Main::IsDatabaseDriverInstalled(QString& reason) {
    reason = m_checks.selfTest();
    return reason.isEmpty();
}

bool Main::Prepare4Command(const QString& commandLine, QString& outFolder) {
    return guarded(
        m_prompt, QStringLiteral("mMain.Prepare4Command"), false,
        [&] {
            outFolder.clear();
            if (commandLine.isEmpty()) {
                return true;
            }
            const QString path = pathOf(commandLine);
            if (!CheckDBInPrivateFolder(path)) {
                return false;
            }
            outFolder = QFileInfo(path).absolutePath();
            return true;
        },
        Prompt::Icon::Exclamation);
}

QString Main::pathOf(QString commandLine) {
    return commandLine.remove(QLatin1Char('"'));
}

bool Main::CheckDBInPrivateFolder(const QString& path) {
    if (!FileOperator::FileValid(path)) {
        return false;
    }
    if (privatefolder::isInPlace(path)) {
        return true;
    }
    m_prompt.messageBox(privatefolder::misplacedText(), Prompt::Icon::Exclamation);
    return false;
}

}  // namespace keeper

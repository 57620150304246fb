// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <gtest/gtest.h>

#include "guard/auto_guard_settings.h"
#include "guard/auto_guardian.h"
#include "guard/guard_timers.h"
#include "platform/folder_lock.h"
#include "platform/idle_time.h"
#include "platform/power.h"
#include "platform/status_panels.h"
#include "platform/tray.h"
#include "support/session_fixture.h"
#include "workspace/ports.h"
#include "workspace/tray_menu.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

class FakeTray final : public Tray {
  public:
    bool isThere = true;
    bool isShown = false;
    State state = State::Open;
    QString toolTip;
    std::vector<TrayItem> items;

    [[nodiscard]] bool isAvailable() const override { return isThere; }
    [[nodiscard]] bool isVisible() const override { return isShown; }
    void setVisible(bool visible) override { isShown = visible; }
    void setState(State newState) override { state = newState; }
    void setToolTip(const QString& text) override { toolTip = text; }
    void setMenu(const std::vector<TrayItem>& menu) override { items = menu; }
    void setItemText(const QString& key, const QString& text) override { item(key).text = text; }
    void setItemEnabled(const QString& key, bool isEnabled) override {
        item(key).isEnabled = isEnabled;
    }
    void showBalloon(const QString&, const QString&) override {}
    TrayItem& item(const QString& key) {
        for (TrayItem& line : items) {
            if (line.key == key) {
                return line;
            }
        }
        throw std::runtime_error("no item " + key.toStdString());
    }
};

/// The neighbours of the automatic guard; what they are asked stands in `events`.
class Neighbours final : public FolderLock,
                         public IdleTime,
                         public StatusPanels,
                         public AuthorityGate,
                         public FillMonitorPort,
                         public Power {
  public:
    QStringList events;
    bool canLock = true;
    bool isPinned = false;
    std::optional<qint64> idle;
    QString countdown;
    bool gateOpens = true;
    std::function<void()> onGate;
    const char* refusal = nullptr;

    bool lock(const QString& folder) override {
        events << u"pin "_s + QFileInfo(folder).fileName();
        return isPinned = canLock;
    }
    void unlock() override {
        events << u"unpin"_s;
        isPinned = false;
    }
    [[nodiscard]] bool isLocked() const override { return isPinned; }
    [[nodiscard]] std::optional<qint64> sinceLastInput() override { return idle; }
    [[nodiscard]] bool isDesktopWide() override { return true; }
    void setPanel(StatusPanel panel, const QString& text) override {
        EXPECT_EQ(statusPanelKey(panel), u"AEStatus"_s);
        countdown = text;
    }
    bool CheckAuthority(bool isNeeded) override {
        EXPECT_TRUE(isNeeded);
        events << u"gate"_s;
        if (onGate) {
            onGate();
        }
        return gateOpens;
    }
    void ActivateMonitor(int state) override { events << u"fill %1"_s.arg(state); }
    void shutDown() override {
        events << u"power"_s;
        if (refusal != nullptr) {
            throw std::runtime_error(refusal);
        }
    }
};

class StubForm final : public OpenForm {
  public:
    explicit StubForm(QStringList& events) : m_events(events) {}
    [[nodiscard]] QString formName() const override { return u"dlgAutoGuard"_s; }
    void closeForm() override { m_events << u"close dlgAutoGuard"_s; }
    void activateForm() override {}

  private:
    QStringList& m_events;
};

class AutoGuardTest : public SessionTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(program->build(name, key));
        prompt.boxes.clear();
        tray.start();
    }
    Settings& rows() { return program->system.settings(); }
    QStringList takeEvents() { return std::exchange(near.events, {}); }
    void tick(int seconds) {
        for (int i = 0; i < seconds; ++i) {
            timers.tick();
        }
    }

    Neighbours near;
    FakeTray icon;
    bool isMainVisible = true;
    qint64 runSeconds = 3725;
    std::optional<AutoExit> ended;
    bool isBusy = false;
    std::function<void()> whenConcealed;
    AutoGuardian guardian{
        {prompt, clock, systemOf(), logsOf(), near,
         [this](bool isLocked) { return tray.SetLockState(isLocked); },
         [this] { near.events << u"clipboard"_s; },
         [this](bool isConcealed) { near.events << (isConcealed ? u"conceal"_s : u"reveal"_s); },
         [this](std::function<void()> todo) { whenConcealed = std::move(todo); },
         [this] { return runSeconds; }, [this] { timers.armLock(); },
         [this](bool) { return std::exchange(isBusy, false); }}};
    GuardTimers timers{{systemOf(), near, guardian, near, [this](AutoExit mode) { ended = mode; }}};
    AutoGuardSettings dialog{{prompt, clock, systemOf(), logsOf(), timers}};
    TrayMenu tray{{prompt, systemOf(), icon, near, near, [this] { return isMainVisible; },
                   [this] { showMain(true); }, [this] { showMain(false); },
                   [this](bool isShown) {
                       near.events << (isShown ? u"lock window"_s : u"no lock window"_s);
                   },
                   [this] { near.events << u"minimise"_s; }, [] { return u"微型尺寸"_s; },
                   [this] { near.events << u"size"_s; }, [] { return true; },
                   [this] { near.events << u"about"_s; }, [this] { near.events << u"exit"_s; },
                   [this] { guardian.LockInstantly(true); },
                   [this] { guardian.UnlockInstantly(false); },
                   [this](bool isRunning) { isClickTimerOn = isRunning; }}};
    bool isClickTimerOn = false;

  private:
    // The members above are made over the program that makes the user in SetUp().
    System& systemOf() { return start().system; }
    SysLogs& logsOf() { return start().logs; }
    SessionProgram& start() {
        if (!program) {
            program = std::make_unique<SessionProgram>(clock, prompt, machine);
        }
        return *program;
    }
    void showMain(bool isVisible) {
        isMainVisible = isVisible;
        near.events << (isVisible ? u"show"_s : u"hide"_s);
    }
};

TEST_F(AutoGuardTest, LockingHidesClosesConcealsAndPinsInThisOrderAndOnce) {
    StubForm form(near.events);
    program->system.ManageForms(form, true);
    rows().p_clearClpbrd(true);
    isBusy = true;
    guardian.LockInstantly(true);
    EXPECT_EQ(takeEvents(), QStringList()) << "put off";
    guardian.LockInstantly(true);
    EXPECT_EQ(takeEvents(),
              QStringList({u"fill 4"_s, u"hide"_s, u"clipboard"_s, u"close dlgAutoGuard"_s,
                           u"conceal"_s, u"pin MORV - 王小明"_s}));
    EXPECT_TRUE(guardian.m_isLock() && program->system.p_isLocked());
    EXPECT_EQ(program->logged(9), 1);
    guardian.LockInstantly(false);
    EXPECT_EQ(takeEvents(), QStringList());
    EXPECT_EQ(program->logged(10), 0);

    program->system.ManageForms(form, false);
    guardian.UnlockInstantly(false);
    EXPECT_EQ(takeEvents(), QStringList({u"fill 4"_s, u"show"_s, u"unpin"_s, u"reveal"_s}));
    Statement row(program->connection, "SELECT lCount FROM tb_SysLog WHERE statusNo=11");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), runSeconds);
    EXPECT_FALSE(guardian.m_isLock() || program->system.p_isLocked());
    EXPECT_EQ(prompt.takeTexts(), QStringList());
}

TEST_F(AutoGuardTest, AFolderThatCannotBePinnedIsToldAndTheManagerStaysLocked) {
    near.canLock = false;
    guardian.LockInstantly(true);
    EXPECT_TRUE(near.events.contains(u"conceal"_s));
    EXPECT_EQ(prompt.takeTexts(), QStringList()) << "the secrets go first";
    whenConcealed();
    EXPECT_EQ(prompt.takeTexts(), QStringList(u"私人文件夹未能正确锁定！"_s));
    EXPECT_TRUE(guardian.m_isLock());
}

TEST_F(AutoGuardTest, TheEndOfALockedSessionFreesTheFolderAndShowsNoWindow) {
    guardian.LockInstantly(true);
    takeEvents();
    program->system.p_isLogouted(true);
    guardian.UnlockInstantly(true);
    EXPECT_EQ(takeEvents(), QStringList({u"fill 4"_s, u"unpin"_s}));
}

TEST_F(AutoGuardTest, IdleLockHitsTheExactSecondAndIsArmedAgainByUnlocking) {
    rows().p_autoLock(true);
    rows().p_autoLockSecs(60);
    timers.armLock();
    for (const std::optional<qint64> idle :
         {std::optional<qint64>(), std::optional<qint64>(59'999), std::optional<qint64>(61'000)}) {
        near.idle = idle;
        tick(1);
        EXPECT_FALSE(guardian.m_isLock()) << idle.value_or(-1);
    }
    EXPECT_TRUE(timers.isLockArmed());
    near.idle = 60'999;
    tick(1);
    EXPECT_TRUE(guardian.m_isLock());
    EXPECT_FALSE(timers.isLockArmed());
    EXPECT_EQ(program->logged(10), 1);
    near.idle = 0;
    guardian.UnlockInstantly(false);
    EXPECT_TRUE(timers.isLockArmed());
    rows().p_autoLock(false);
    guardian.LockInstantly(true);
    guardian.UnlockInstantly(false);
    EXPECT_FALSE(timers.isLockArmed());
}

TEST_F(AutoGuardTest, ExitTimerCountsDownOnThePanelAndEndsOnceWithItsMode) {
    rows().p_autoLock(true);
    rows().p_autoLockSecs(60);
    timers.armLock();
    timers.setAutoExit(AutoExit::ShutDown, 3661);
    EXPECT_EQ(near.countdown, QString());
    tick(1);
    EXPECT_EQ(timers.m_autoExitSecs(), 3661) << "waits for the dialog to close";
    timers.armExit();
    tick(1);
    EXPECT_EQ(near.countdown, u"01小时01分00秒"_s);
    tick(3659);
    EXPECT_FALSE(ended.has_value());
    tick(1);
    EXPECT_EQ(ended, AutoExit::ShutDown);
    EXPECT_FALSE(timers.isLockArmed());
    EXPECT_FALSE(timers.isExitArmed());
    timers.setAutoExit(AutoExit::None, 0);
    timers.armExit();
    EXPECT_FALSE(timers.isExitArmed());
    EXPECT_EQ(near.countdown, QString());
}

TEST_F(AutoGuardTest, DialogRefusesIntervalsBelowAMinuteAndNumbersOutOfRange) {
    using D = AutoGuardSettings;
    dialog.load();
    dialog.choose(D::fraAutoLock, 1);
    const auto setTime = [this](D::Frame frame, const QString& hours, const QString& minutes,
                                const QString& seconds) {
        dialog.type(frame, D::Hours, hours);
        dialog.type(frame, D::Minutes, minutes);
        dialog.type(frame, D::Seconds, seconds);
    };
    setTime(D::fraAutoLock, u"0"_s, u"0"_s, u"59"_s);
    dialog.cmdOK(D::fraAutoLock);
    EXPECT_EQ(lastText(), u"自动锁定的时间间隔最短不能小于60秒！"_s);
    EXPECT_FALSE(rows().p_autoLock());
    for (const int mode : {1, 2}) {
        dialog.choose(D::fraAutoExit, mode);
        setTime(D::fraAutoExit, u"0"_s, u"0"_s, u"59"_s);
        EXPECT_FALSE(dialog.CheckValid(D::fraAutoExit));
        EXPECT_EQ(lastText(),
                  (mode == 1 ? u"自动关闭"_s : u"关机退出"_s) + u"的时间间隔最短不能小于60秒！"_s);
    }
    dialog.choose(D::fraAutoExit, 0);
    EXPECT_TRUE(dialog.CheckValid(D::fraAutoExit));

    dialog.spin(D::fraAutoLock, D::Hours, 7);
    for (const QString& wrong : {u"24"_s, u"-1"_s, u"x"_s, u"99999999999"_s}) {
        dialog.type(D::fraAutoLock, D::Hours, wrong);
        EXPECT_EQ(lastText(), u"时间的取值范围在0-23之间！"_s);
        EXPECT_EQ(dialog.text(D::fraAutoLock, D::Hours), u"7"_s);
    }
    dialog.type(D::fraAutoLock, D::Minutes, u"60"_s);
    EXPECT_EQ(lastText(), u"时间的取值范围在0-59之间！"_s);
    // An empty field counts as its spinner.
    dialog.type(D::fraAutoLock, D::Hours, QString());
    EXPECT_TRUE(dialog.CheckValid(D::fraAutoLock));
    EXPECT_EQ(dialog.text(D::fraAutoLock, D::Hours), u"7"_s);
}

TEST_F(AutoGuardTest, DialogStoresLogsAndTakesEffectWhenItCloses) {
    using D = AutoGuardSettings;
    dialog.load();
    EXPECT_TRUE(dialog.locksWithScreen()) << "on unless somebody switched it off";
    dialog.locksWithScreen(false);
    dialog.choose(D::fraAutoLock, 1);
    dialog.spin(D::fraAutoLock, D::Minutes, 1);
    dialog.cmdOK(D::fraAutoLock);
    EXPECT_EQ(prompt.boxes.back().title, u"自动锁定"_s);
    EXPECT_EQ(lastText(), u"自动锁定设置成功！关闭本对话框后生效。"_s);
    EXPECT_FALSE(timers.isLockArmed());
    dialog.choose(D::fraAutoExit, 1);
    dialog.spin(D::fraAutoExit, D::Minutes, 2);
    dialog.cmdOK(D::fraAutoExit);
    EXPECT_EQ(prompt.boxes.back().title, u"自动退出"_s);
    EXPECT_EQ(lastText(), u"自动退出设置成功！关闭本对话框后生效。"_s);
    EXPECT_FALSE(timers.isExitArmed());
    dialog.unload();
    EXPECT_TRUE(timers.isLockArmed());
    EXPECT_TRUE(timers.isExitArmed());
    EXPECT_EQ(timers.m_autoExitSecs(), 120);
    EXPECT_EQ(rows().p_autoLockSecs(), 60);

    // A crash right now must find them.
    QString message;
    ASSERT_TRUE(rows().ReadDB(message));
    EXPECT_TRUE(rows().p_autoLock());
    EXPECT_FALSE(rows().p_lockWithScreen());

    dialog.load();
    EXPECT_EQ(dialog.option(D::fraAutoLock), 1);
    EXPECT_EQ(dialog.option(D::fraAutoExit), 1);
    dialog.choose(D::fraAutoLock, 0);
    dialog.cmdOK(D::fraAutoLock);
    dialog.choose(D::fraAutoExit, 0);
    dialog.cmdOK(D::fraAutoExit);
    dialog.unload();
    EXPECT_FALSE(timers.isLockArmed());
    EXPECT_FALSE(timers.isExitArmed());
    Statement counts(program->connection,
                     "SELECT group_concat(lCount) FROM tb_SysLog WHERE statusNo=8");
    ASSERT_TRUE(counts.step());
    EXPECT_EQ(counts.text(0), u"-1,1,-2,0"_s);
    prompt.boxes.clear();
}

TEST_F(AutoGuardTest, TrayMenuTellsTheLockAndIsTheWayBackThroughTheGate) {
    const QString open = icon.toolTip;
    EXPECT_TRUE(open.endsWith(u" - 王小明"_s));
    tray.choose(u"mn_trayLock"_s);
    EXPECT_EQ(icon.item(u"mn_trayLock"_s).text, u"解锁"_s);
    EXPECT_FALSE(icon.item(u"mn_trayMainInterface"_s).isEnabled);
    EXPECT_FALSE(icon.item(u"mn_trayFormSize"_s).isEnabled);
    EXPECT_EQ(icon.toolTip, u"王小明 - 管理器已经锁定，点此解锁。"_s);
    EXPECT_EQ(icon.state, Tray::State::Locked);
    takeEvents();

    near.gateOpens = false;
    near.onGate = [this] { tray.choose(u"mn_trayLock"_s); };  // clicked again while it asks
    tray.choose(u"mn_trayLock"_s);
    EXPECT_EQ(takeEvents(), QStringList(u"gate"_s));
    EXPECT_TRUE(guardian.m_isLock());
    near.onGate = nullptr;
    near.gateOpens = true;
    tray.comeBack();
    EXPECT_FALSE(guardian.m_isLock());
    EXPECT_TRUE(isMainVisible);
    EXPECT_EQ(icon.item(u"mn_trayLock"_s).text, u"锁定"_s);
    EXPECT_TRUE(icon.item(u"mn_trayFormSize"_s).isEnabled);
    EXPECT_EQ(icon.toolTip, open);

    isMainVisible = false;
    guardian.LockInstantly(true);
    EXPECT_EQ(icon.toolTip, u"主界面已隐藏到托盘；\n王小明 - 管理器已经锁定，点此解锁。"_s);
    program->system.p_isLogouted(true);
    guardian.UnlockInstantly(true);
    tray.choose(u"mn_trayLock"_s);
    EXPECT_FALSE(guardian.m_isLock()) << "nobody is logged in";
}

TEST_F(AutoGuardTest, TrayClicksAreToldFromDoubleClicks) {
    isMainVisible = false;
    tray.click();
    EXPECT_TRUE(isClickTimerOn);
    EXPECT_EQ(takeEvents(), QStringList());
    tray.tmrClickTray();
    EXPECT_EQ(takeEvents(), QStringList(u"show"_s));
    tray.click();
    tray.doubleClick();
    EXPECT_FALSE(isClickTimerOn);
    EXPECT_EQ(takeEvents(), QStringList(u"hide"_s));
    for (const char16_t* item :
         {u"mn_trayMainInterface", u"mn_trayFormSize", u"mn_trayAbout", u"mn_trayExit"}) {
        tray.choose(QString::fromUtf16(item));
    }
    EXPECT_EQ(takeEvents(), QStringList({u"show"_s, u"size"_s, u"about"_s, u"exit"_s}));
}

TEST_F(AutoGuardTest, WithoutATrayAWindowStandsInForTheIconAndNothingIsHiddenForGood) {
    icon.isThere = false;
    tray.hideToTray();
    EXPECT_EQ(takeEvents(), QStringList(u"minimise"_s));
    guardian.LockInstantly(true);
    EXPECT_TRUE(near.events.contains(u"lock window"_s));
    takeEvents();
    icon.isThere = true;  // the panel comes up
    tray.tick();
    EXPECT_EQ(takeEvents(), QStringList(u"no lock window"_s));
    icon.isThere = false;
    tray.tick();
    tray.tick();
    EXPECT_EQ(takeEvents(), QStringList(u"lock window"_s));
    tray.tryUnlock();
    EXPECT_TRUE(near.events.contains(u"no lock window"_s));
    EXPECT_TRUE(isMainVisible);
}

TEST_F(AutoGuardTest, ARefusedShutdownIsToldWithItsReason) {
    near.refusal = "Permission denied";
    EXPECT_FALSE(program->osInfo.ShutdownOS(near));
    EXPECT_EQ(prompt.boxes.back().icon, Prompt::Icon::Critical);
    EXPECT_EQ(lastText(), u"[0]ShutdownOS:\r\nPermission denied"_s);
    near.refusal = nullptr;
    EXPECT_TRUE(program->osInfo.ShutdownOS(near));
}

}  // namespace
}  // namespace keeper

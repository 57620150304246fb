// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTest>

#include "guard/auto_guardian.h"
#include "guard/guard_timers.h"
#include "platform/folder_lock.h"
#include "platform/idle_time.h"
#include "platform/status_panels.h"
#include "support/session_fixture.h"
#include "ui/dlg_auto_guard.h"

namespace keeper {
namespace {

using namespace Qt::StringLiterals;

class NoNeighbours final : public IdleTime, public StatusPanels, public FolderLock {
  public:
    bool lock(const QString& /*folder*/) override { return true; }
    void unlock() override {}
    [[nodiscard]] bool isLocked() const override { return false; }
    [[nodiscard]] std::optional<qint64> sinceLastInput() override { return std::nullopt; }
    [[nodiscard]] bool isDesktopWide() override { return false; }
    void setPanel(StatusPanel /*panel*/, const QString& /*text*/) override {}
};

TEST_F(SessionTest, AutoGuardFormSetsTheTimesThatAreTypedAndRefusesWrongOnes) {
    prompt.boxes.clear();
    NoNeighbours near;
    AutoGuardian guardian(
        {prompt, clock, program->system, program->logs, near, {}, {}, {}, {}, {}, {}});
    GuardTimers timers({program->system, near, guardian, near, {}});
    AutoGuardSettings logic({prompt, clock, program->system, program->logs, timers});
    dlgAutoGuard form(logic);
    const auto part = [&form](auto* type, const char* control) {
        auto* found =
            form.findChild<std::remove_pointer_t<decltype(type)>*>(QString::fromLatin1(control));
        EXPECT_NE(found, nullptr) << control;
        return found;
    };
    logic.load();
    program->system.p_isLocked(true);
    EXPECT_FALSE(form.run(program->system)) << "no form opens over a locked manager";
    program->system.p_isLocked(false);
    form.show();
    auto* minutes = part(static_cast<QLineEdit*>(nullptr), "txtAutoExit1");
    EXPECT_FALSE(minutes->isEnabled());
    part(static_cast<QRadioButton*>(nullptr), "optAutoExit1")->click();
    EXPECT_TRUE(minutes->isEnabled());
    minutes->selectAll();
    QTest::keyClicks(minutes, u"75"_s);
    EXPECT_EQ(lastText(), u"时间的取值范围在0-59之间！"_s);
    EXPECT_EQ(minutes->text(), u"7"_s) << "the last good value stands";
    minutes->clear();
    QTest::keyClicks(minutes, u"3"_s);
    QTest::keyClick(part(static_cast<QSpinBox*>(nullptr), "udAutoExit2"), Qt::Key_Up);
    part(static_cast<QPushButton*>(nullptr), "cmdOK1")->click();
    EXPECT_EQ(lastText(), u"自动退出设置成功！关闭本对话框后生效。"_s);
    EXPECT_EQ(timers.m_autoExit(), AutoExit::Close);
    EXPECT_EQ(timers.m_autoExitSecs(), 181);
    EXPECT_FALSE(logic.hint().isEmpty()) << "no idle time from this desktop";
    // Enter stores the frame where the person is, and no other.
    timers.setAutoExit(AutoExit::None, 0);
    form.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    minutes->setFocus();
    QTest::keyClick(minutes, Qt::Key_Return);
    EXPECT_EQ(timers.m_autoExit(), AutoExit::Close);
}

}  // namespace
}  // namespace keeper

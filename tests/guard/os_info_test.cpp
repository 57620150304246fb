// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "guard/os_info.h"

#include <gtest/gtest.h>

#include "support/fake_machine.h"
#include "support/scripted_prompt.h"

namespace keeper {
namespace {

TEST(OSInfo, FingerprintIsTakenOnceAndASilentSourceStopsTheStart) {
    FakeMachine machine;
    ScriptedPrompt prompt;
    OSInfo info(machine, prompt);
    EXPECT_TRUE(info.Initialize());
    EXPECT_EQ(info.p_diskSN(), machine.disk);
    machine.disk = QStringLiteral("PLUGGED");
    EXPECT_NE(info.p_diskSN(), machine.disk);

    machine.firmware.clear();
    machine.processor.clear();
    EXPECT_FALSE(info.Initialize());
    EXPECT_EQ(prompt.takeTexts(),
              QStringList({QStringLiteral("[0]OSInfo.GetBIOSSN:\r\nsource out of order"),
                           QStringLiteral("[0]OSInfo.GetCPUSN:\r\nsource out of order")}));
    EXPECT_EQ(info.p_biosSN(), QString());
}

TEST(OSInfo, LogTellsTheKindOfAnAddressByASign) {
    FakeMachine machine;
    ScriptedPrompt prompt;
    OSInfo info(machine, prompt);
    EXPECT_EQ(info.machineText(), QStringLiteral("HOST\t10.0.0.2"));
    EXPECT_EQ(info.addressSign(), 1);
    machine.address = {QStringLiteral("A4:C3:F0:00:00:02"), true};
    EXPECT_EQ(info.addressSign(), -1);
    machine.address = {};
    EXPECT_EQ(info.addressSign(), 0);
}

}  // namespace
}  // namespace keeper

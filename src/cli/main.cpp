// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include <cstdio>

int main() {
    std::fputs("usage: morvane-cli COMMAND\n", stderr);
    return 2;
}

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/clipboard.h"

namespace keeper {

/// The desktop's clipboard.
class QtClipboard final : public Clipboard {
  public:
    void setText(const QString& text, Kind kind) override;
    [[nodiscard]] QString text() const override;
    [[nodiscard]] bool isOwned() const override;
    bool clear() override;
    void clearSelection() override;
};

}  // namespace keeper

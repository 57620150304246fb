// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusMessage>

#include "platform/appearance.h"

namespace keeper {

/// Light or dark as the desktop's settings portal tells it, and, until that has answered or where
/// there is none, as the settings files of the two common desktops tell it.
class DesktopAppearance final : public Appearance {
    Q_OBJECT

  public:
    /// `configuration` is the folder of the settings files, such as ~/.config. Reads files only.
    explicit DesktopAppearance(const QString& configuration);

    /// Asks the portal, without waiting for it, and follows its changes from then on. For the
    /// portal's sake the process is open to it until the answer (see OpenToPortals), so this is to
    /// be called before a key can be typed.
    void watch();
    [[nodiscard]] Scheme scheme() const override { return m_scheme; }

  private Q_SLOTS:
    void onSettingChanged(const QDBusMessage& message);

  private:
    void accept(const QVariant& value);

    Scheme m_scheme = Scheme::Unknown;
};

}  // namespace keeper

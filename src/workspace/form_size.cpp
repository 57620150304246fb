// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/form_size.h"

#include "workspace/workspace.h"

namespace keeper {
namespace {

/// Lengths are stored in twips, 1440 to the inch; a logical pixel is the 96th of one.
constexpr int kTwipsPerPixel = 15;
constexpr std::uint8_t kMicro = 0;
constexpr std::uint8_t kOriginal = 2;

}  // namespace

bool FormSize::isMicro() const {
    return m_workspace.services.settings.p_mainSizeType() == kMicro;
}

bool FormSize::isKeptInFront() const {
    return isMicro() && m_workspace.services.settings.p_keepMainFront();
}

QString FormSize::caption() const {
    return isMicro() ? QStringLiteral("原始尺寸") : QStringLiteral("微型尺寸");
}

bool FormSize::mn_formSize() {
    const WorkspaceServices& services = m_workspace.services;
    if (isMicro()) {
        if (!services.gate.CheckAuthority(services.settings.GetAuthority(kRestoreOriginalSize) !=
                                          0)) {
            return false;
        }
        services.settings.p_mainSizeType(kOriginal);
    } else {
        services.settings.p_mainSizeType(kMicro);
    }
    return true;
}

bool FormSize::keepInFront(bool isWanted) {
    if (isWanted && !isMicro()) {
        m_workspace.tell(QStringLiteral("禁止在非微型尺寸视图下使主界面保持前置！"));
        return false;
    }
    m_workspace.services.settings.p_keepMainFront(isWanted);
    return true;
}

QSize FormSize::originalSize() const {
    const Settings& settings = m_workspace.services.settings;
    const QSize size(settings.p_orgWidth() / kTwipsPerPixel,
                     settings.p_orgHeight() / kTwipsPerPixel);
    return size.isEmpty() ? QSize() : size;
}

void FormSize::originalSize(QSize size) {
    m_workspace.services.settings.p_orgWidth(size.width() * kTwipsPerPixel);
    m_workspace.services.settings.p_orgHeight(size.height() * kTwipsPerPixel);
}

int FormSize::sheetsWidth() const {
    return m_workspace.services.settings.p_sheetsWidth() / kTwipsPerPixel;
}

void FormSize::sheetsWidth(int width) {
    m_workspace.services.settings.p_sheetsWidth(width * kTwipsPerPixel);
}

int FormSize::minLeft() const {
    return m_workspace.services.settings.p_minLeft() / kTwipsPerPixel;
}

void FormSize::minLeft(int left) {
    m_workspace.services.settings.p_minLeft(left * kTwipsPerPixel);
}

}  // namespace keeper

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/open_forms.h"

#include <algorithm>

namespace keeper {
namespace {

/// The order is that of closing. The last two rows are spare.
constexpr std::array names{
    u"dlgBranchManage", u"dlgAuthentication", u"dlgAuthority",      u"dlgAutoGuard",
    u"dlgCommon",       u"dlgKeyboard",       u"dlgManageSecret",   u"dlgModifySecret",
    u"dlgUserSettings", u"dlgCheckoutEntry",  u"dlgRndGenerator",   u"dlgSecureQuestion",
    u"dlgStatusNo",     u"dlgAbout",          u"dlgColumnCryption", u"dlgAssociate",
    u"dlgSearchEngine", u"dlgDemo",           u"dlgOptionSettings", u"dlgSynchLog",
    u"frmLog",          u"frmTipOfDay",       u"frmCryptor"};

}  // namespace

void OpenForms::ManageForms(OpenForm& form, bool isOpen) {
    const QString name = form.formName();
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const char16_t* row) { return QStringView(row) == name; });
    if (found == names.end()) {
        return;
    }
    OpenForm*& row = m_forms.at(static_cast<std::size_t>(found - names.begin()));
    if (isOpen) {
        row = &form;
    } else if (row == &form) {  // not a younger form of the same name
        row = nullptr;
    }
}

bool OpenForms::IsAnyFormOn() const {
    return std::any_of(m_forms.begin(), m_forms.end(),
                       [](const OpenForm* form) { return form != nullptr; });
}

void OpenForms::CloseForms() {
    // Closing one form may close another, so the table is read anew at each row.
    for (std::size_t i = 0; i < rows; ++i) {
        if (m_forms.at(i) != nullptr) {
            m_forms.at(i)->closeForm();
        }
    }
}

void OpenForms::ActivateForm() {
    const auto last = std::find_if(m_forms.rbegin(), m_forms.rend(),
                                   [](const OpenForm* form) { return form != nullptr; });
    if (last != m_forms.rend()) {
        (*last)->activateForm();
    }
}

}  // namespace keeper

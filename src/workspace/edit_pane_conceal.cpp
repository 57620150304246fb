// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "workspace/edit_pane.h"

namespace keeper {

std::vector<QString*> EditPane::concealable() {
    std::vector<QString*> texts{&m_state.txtTitle,  &m_state.txtLocation, &m_state.txtRemarks,
                                &m_state.ComboBox2, &m_state.cboPassword, &m_numberText,
                                &m_passwordText};
    if (m_workspace.m_entry) {
        ShownEntry& entry = *m_workspace.m_entry;
        for (QString* text : {&entry.common.m_Title, &entry.common.m_Remarks,
                              &entry.common.m_customPwd, &entry.location, &entry.password}) {
            texts.push_back(text);
        }
    }
    return texts;
}

void EditPane::conceal(Random& random) {
    const Showing showing(*this);
    if (m_concealed.isEmpty()) {
        m_concealed.conceal(concealable(), random);
    }
}

void EditPane::reveal() {
    const Showing showing(*this);
    m_concealed.reveal(concealable());
}

}  // namespace keeper

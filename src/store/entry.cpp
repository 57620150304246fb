// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/entry.h"

#include "crypto/secure_wipe.h"
#include "store/numbering.h"

namespace keeper {

Entry::~Entry() {
    secureWipe(m_customPwd);
}

void Entry::p_No(const QString& wholeNumber) {
    const EntryNo number = EntryNo::split(wholeNumber);
    m_dirPath = number.dirPath;
    m_entNo = number.entNo;
}

NetEntry::~NetEntry() {
    secureWipe(m_customNum);
}

}  // namespace keeper

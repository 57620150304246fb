// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "store/entry.h"

#include "store/numbering.h"

namespace keeper {

void Entry::p_No(const QString& wholeNumber) {
    const EntryNo number = EntryNo::split(wholeNumber);
    m_dirPath = number.dirPath;
    m_entNo = number.entNo;
}

}  // namespace keeper

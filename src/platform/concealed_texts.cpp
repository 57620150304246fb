// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "platform/concealed_texts.h"

#include <algorithm>

#include "crypto/secure_wipe.h"
#include "platform/memory_lock.h"
#include "platform/random.h"

namespace keeper {

void ConcealedTexts::conceal(std::span<QString* const> texts, Random& random) {
    forget();
    std::size_t units = 0;
    for (const QString* text : texts) {
        units += static_cast<std::size_t>(text->size());
    }
    // Sized once: growing would leave copies behind.
    m_pad.resize(units * sizeof(char16_t));
    m_hidden.resize(m_pad.size());
    random.fill(m_pad);
    keepOutOfSwap(m_pad.data(), m_pad.size());
    keepOutOfSwap(m_hidden.data(), m_hidden.size());
    std::size_t at = 0;
    for (QString* text : texts) {
        m_lengths.push_back(static_cast<std::size_t>(text->size()));
        for (const QChar character : std::as_const(*text)) {
            m_hidden.at(at) = m_pad.at(at) ^ character.cell();
            m_hidden.at(at + 1) = m_pad.at(at + 1) ^ character.row();
            at += sizeof(char16_t);
        }
        secureWipe(*text);
        text->clear();
    }
}

void ConcealedTexts::reveal(std::span<QString* const> texts) {
    std::size_t at = 0;
    const std::size_t count = std::min(texts.size(), m_lengths.size());
    for (std::size_t i = 0; i < count; ++i) {
        QString& text = *texts[i];
        text.resize(static_cast<qsizetype>(m_lengths.at(i)));
        for (QChar& character : text) {
            character = QChar(static_cast<uchar>(m_hidden.at(at) ^ m_pad.at(at)),
                              static_cast<uchar>(m_hidden.at(at + 1) ^ m_pad.at(at + 1)));
            at += sizeof(char16_t);
        }
    }
    forget();
}

void ConcealedTexts::forget() {
    secureWipe(m_hidden);
    secureWipe(m_pad);
    m_hidden.clear();
    m_pad.clear();
    m_lengths.clear();
}

}  // namespace keeper

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor2.h"

#include <algorithm>
#include <bit>
#include <exception>
#include <vector>

#include "crypto/code_page.h"
#include "crypto/digest_blocks.h"
#include "crypto/posix_file.h"
#include "crypto/secure_wipe.h"
#include "crypto/sha1.h"

namespace keeper {

namespace {

constexpr std::size_t kHashBuffer = std::size_t{256} * 1024;

Sha1Transform transform() {
    static const Sha1Transform chosen = sha1Path().transform;
    return chosen;
}

/// The whole blocks of `piece` go into the state; what is behind them is left to the caller.
std::span<const std::uint8_t> absorb(Sha1State& state, std::span<const std::uint8_t> piece) {
    const std::size_t whole = piece.size() / kDigestBlock;
    transform()(state, piece.data(), whole);
    return piece.subspan(whole * kDigestBlock);
}

QString finish(Sha1State& state, std::span<const std::uint8_t> tail, std::uint64_t totalBytes) {
    const PaddedTail last(tail, totalBytes, std::endian::big);
    transform()(state, last.data(), last.blocks());
    return digestText(state, std::endian::big);
}

}  // namespace

QString Cryptor2::hashString(QStringView text) {
    std::vector<std::uint8_t> bytes = ansiBytes(text);
    const WipeGuard wipe(bytes);
    return hashArray(bytes);
}

QString Cryptor2::hashArray(std::span<const std::uint8_t> data) {
    Sha1State state = kSha1Start;
    const std::span<const std::uint8_t> tail = absorb(state, data);
    return finish(state, tail, data.size());
}

QString Cryptor2::hashFile(const QString& path) {
    if (m_busy.m_isSet) {
        return QString();
    }
    m_busy.m_isSet = true;
    QString digest;
    try {
        PosixFile file = PosixFile::openSource(path);
        std::vector<std::uint8_t> buffer(kHashBuffer);
        const WipeGuard wipe(buffer);
        Sha1State state = kSha1Start;
        std::span<const std::uint8_t> tail;
        for (std::int64_t left = file.size(); left > 0;) {
            const auto piece = std::span(buffer).first(
                static_cast<std::size_t>(std::min<std::int64_t>(left, kHashBuffer)));
            file.read(piece);
            tail = absorb(state, piece);
            left -= static_cast<std::int64_t>(piece.size());
        }
        digest = finish(state, tail, static_cast<std::uint64_t>(file.size()));
    } catch (const std::exception&) {
        digest.clear();
    }
    m_busy.m_isSet = false;
    return digest;
}

}  // namespace keeper

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "crypto/cryptor1.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <exception>
#include <span>
#include <vector>

#include "crypto/code_page.h"
#include "crypto/digest_blocks.h"
#include "crypto/md5.h"
#include "crypto/posix_file.h"
#include "crypto/progress_steps.h"
#include "crypto/secure_wipe.h"

namespace keeper {

namespace {

/// From here on the counted bytes, as bits, leave the signed 32-bit number that holds them.
constexpr std::uint64_t kCountLimit = 268'435'456;
/// A file below this size is digested too fast for the event loop to be worth a turn at the end.
constexpr std::uint64_t kBigFile = 102'400;
/// Small enough for the second-level cache, large enough that system calls do not count.
constexpr std::size_t kBuffer = std::size_t{128} * 1024;
constexpr float kProgressStep = 0.5F;

/// The bytes that are digested: the block that ends exactly with the file is left out.
std::uint64_t countedBytes(std::uint64_t size) {
    return size > 0 && size % kDigestBlock == 0 ? size - kDigestBlock : size;
}

QString finish(Md5State& state, std::span<const std::uint8_t> tail, std::uint64_t totalBytes) {
    const PaddedTail last(tail, totalBytes, std::endian::little);
    md5Transform(state, last.data(), last.blocks());
    return digestText(state, std::endian::little);
}

/// Clears both flags however the operation ends.
class BusyScope {
  public:
    BusyScope(bool& busy, volatile bool& stop) : m_busy(busy), m_stop(stop) {
        m_busy = true;
        m_stop = false;
    }
    ~BusyScope() {
        m_busy = false;
        m_stop = false;
    }
    BusyScope(const BusyScope&) = delete;
    BusyScope& operator=(const BusyScope&) = delete;

  private:
    bool& m_busy;
    volatile bool& m_stop;
};

class Stopped : public std::exception {};

}  // namespace

QString Cryptor1::hashString(QStringView text) {
    std::vector<std::uint8_t> bytes = ansiBytes(text);
    const WipeGuard wipe(bytes);
    Md5State state = kMd5Start;
    const std::size_t whole = bytes.size() / kDigestBlock;
    md5Transform(state, bytes.data(), whole);
    return finish(state, std::span(bytes).subspan(whole * kDigestBlock), bytes.size());
}

bool Cryptor1::hashFile(const QString& path, QString& digest) {
    const BusyScope busy(m_isCalculating, m_stopRequested);
    try {
        PosixFile file = PosixFile::openSource(path);
        if (countedBytes(static_cast<std::uint64_t>(file.size())) >= kCountLimit) {
            return false;
        }
        digest = digestOf(file);
        return true;
    } catch (const std::exception&) {
        // Callers compare digests and tell people themselves what a missing one means.
        return false;
    }
}

QString Cryptor1::digestOf(PosixFile& file) {
    const auto size = static_cast<std::uint64_t>(file.size());
    const std::uint64_t tail = size % kDigestBlock;
    const std::uint64_t counted = countedBytes(size);
    const std::uint64_t wholeBlocksEnd = counted - tail;

    std::vector<std::uint8_t> buffer(kBuffer);
    const WipeGuard wipe(buffer);
    Md5State state = kMd5Start;
    ProgressSteps progress(size, kDigestBlock, kProgressStep);
    std::size_t lastRead = 0;
    for (std::uint64_t position = 0; position < size;) {
        const std::uint64_t until =
            std::min({progress.nextPosition(), position + buffer.size(), size});
        lastRead = static_cast<std::size_t>(until - position);
        file.read(std::span(buffer).first(lastRead));
        const std::uint64_t end = std::min(until, wholeBlocksEnd);
        if (end > position) {
            md5Transform(state, buffer.data(),
                         static_cast<std::size_t>((end - position) / kDigestBlock));
        }
        position = until;
        if (progress.reached(position)) {
            raiseProgress(progress.lastRaised());
        }
        if (position == size && size >= kBigFile) {
            m_host.turnEventLoop();
        }
        if (m_stopRequested) {
            throw Stopped();
        }
    }
    const auto rest = static_cast<std::size_t>(tail);
    QString digest = finish(
        state, std::span<const std::uint8_t>(buffer).subspan(lastRead - rest, rest), counted);
    if (progress.lastRaised() < 100.0F && DisplayProgress) {
        DisplayProgress(progress.lastRaised());
    }
    return digest;
}

void Cryptor1::raiseProgress(float percent) {
    if (DisplayProgress) {
        DisplayProgress(percent);
    }
    m_host.turnEventLoop();
}

}  // namespace keeper

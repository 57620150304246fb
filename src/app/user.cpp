// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "app/user.h"

#include <QFileInfo>
#include <algorithm>
#include <span>
#include <utility>

#include "app/private_folder.h"
#include "app/users.h"
#include "crypto/code_page.h"
#include "crypto/cryptor2.h"
#include "crypto/cryptor3.h"
#include "crypto/cryptor4.h"
#include "crypto/secure_wipe.h"
#include "platform/memory_lock.h"
#include "store/failure.h"

namespace keeper {
namespace {

constexpr std::int16_t passwordLength = 32;
/// Numbers of key pairs that a record may be written under.
constexpr std::uint32_t recordPairs = 49;
constexpr std::int16_t keyPairs = 50;
/// The one pair of all hashes of login keys.
constexpr std::int16_t hashPair = 17;

/// Beside the four values that make a record.
const QString kFormerHash = QStringLiteral("4");
const QString kSealedMark = QStringLiteral("5");

bool sameAnsi(const QString& one, const QString& other) {
    auto a = ansiBytes(one);
    auto b = ansiBytes(other);
    const WipeGuard wipeA(a);
    const WipeGuard wipeB(b);
    return a == b;
}

QString recordKey(const QString& userName) {
    return UserKeyPrefix() + Users::GetHashUserTitle(userName);
}

/// A record that does not open makes its user unknown, without a word. Texts this short need no
/// turn of the event loop.
class SilentHost final : public CryptorHost {
  public:
    void showMessage(Severity /*severity*/, const QString& /*text*/) override {}
    void turnEventLoop() override {}
};

/// Texts under random passwords, which are themselves hidden by one of the numbered key pairs.
class Envelope {
  public:
    explicit Envelope(Random& random)
        : m_cipher(m_host),
          m_codec(m_host, [&random](std::span<std::uint8_t> bytes) { random.fill(bytes); }) {}

    struct Sealed {
        QString text;
        QString password;
    };

    /// `pairFor` names the key pair for a ciphertext. A password that would not lead back to the
    /// text's ANSI bytes is drawn again. The text must hold no NUL.
    template <typename PairFor>
    Sealed seal(const QString& text, PairFor pairFor) {
        constexpr int attempts = 16;
        for (int i = 0; i < attempts; ++i) {
            QString password = m_codec.RanPwd4PGP(passwordLength, passwordLength);
            const WipeGuard wipePassword(password);
            Sealed sealed;
            sealed.text = m_cipher.EncryptString(text, password);
            const std::int16_t pair = pairFor(sealed.text);
            sealed.password = encode(password, pair);
            QString again = open(sealed, pair);
            const WipeGuard wipeAgain(again);
            if (sameAnsi(again, text)) {
                return sealed;
            }
        }
        throw KeeperError(5, QStringLiteral("User"), QStringLiteral("加密用户记录失败。"));
    }

    [[nodiscard]] QString open(const Sealed& sealed, std::int16_t pair) {
        QString password = decode(sealed.password, pair);
        const WipeGuard wipe(password);
        return m_cipher.DecryptString(sealed.text, password);
    }

    [[nodiscard]] QString encode(const QString& text, std::int16_t pair) {
        const auto key = keyOf(pair);
        return m_codec.Encode(text, key.at(0), key.at(2));
    }

    [[nodiscard]] QString decode(const QString& text, std::int16_t pair) {
        const auto key = keyOf(pair);
        return m_codec.Decode(text, key.at(1), key.at(2));
    }

  private:
    static Cryptor4::Key keyOf(std::int16_t pair) {
        Cryptor4::Key key{};
        Cryptor4::GetPGPKey(pair, key);
        return key;
    }

    SilentHost m_host;
    Cryptor3 m_cipher;
    Cryptor4 m_codec;
};

std::int16_t keyPairFor(const QString& partA) {
    return static_cast<std::int16_t>(partA.size() % keyPairs);
}

}  // namespace

User::~User() {
    for (QString* part : {&m_record.keyPartA, &m_record.keyPartB, &m_key.partA, &m_key.partB}) {
        secureWipe(*part);
    }
}

bool User::ReadRegistry(const QString& name) {
    const QString formerCopy = m_record.activeFile;
    Regedit& regedit = m_services.regedit;
    if (!regedit.openKey(kMachineRoot, recordKey(name))) {
        return false;
    }
    const QString hash = regedit.getString(QStringLiteral("0"));
    const QString formerHash = regedit.getString(kFormerHash);
    const QString sealedMark = regedit.getString(kSealedMark);
    bool isNumber = false;
    const auto pair =
        static_cast<std::int16_t>(regedit.getString(QStringLiteral("1")).toShort(&isNumber));
    const Envelope::Sealed sealed{regedit.getString(QStringLiteral("3")),
                                  regedit.getString(QStringLiteral("2"))};
    regedit.closeKey();

    Envelope envelope(m_services.random);
    m_key.hash = envelope.decode(hash, hashPair);
    if (!isNumber || pair < 0 || pair >= static_cast<std::int16_t>(recordPairs)) {
        return false;
    }
    QString text = envelope.open(sealed, pair);
    const WipeGuard wipe(text);
    auto record = UserRecord::fromText(text);
    if (!record) {
        return false;
    }
    m_record = std::move(*record);
    m_key.formerHash = formerHash.isEmpty() ? QString() : envelope.decode(formerHash, hashPair);
    m_sealedMark = sealedMark;
    p_privateFolder(QString(m_record.privateFolder));
    m_key.partA = m_record.keyPartA;
    m_key.partB = m_record.keyPartB;
    m_recordText = sealed.text;
    m_isCopyGivenUp = m_isCopyGivenUp && m_record.activeFile == formerCopy;
    try {
        m_startupWithOS = m_services.autostart.contains(Users::GetHashUserTitle(p_userName()));
    } catch (const std::exception&) {
        m_startupWithOS = false;
    }
    return true;
}

bool User::WriteRegistry() {
    if (p_userName().isEmpty()) {
        return false;
    }
    QString text = m_record.toText();
    const WipeGuard wipe(text);
    try {
        const auto pair = static_cast<std::int16_t>(m_services.random.below(recordPairs));
        Envelope envelope(m_services.random);
        const auto sealed = envelope.seal(text, [pair](const QString&) { return pair; });
        const bool isWritten = writeValues(
            {envelope.encode(m_key.hash, hashPair), QString::number(pair), sealed.password,
             sealed.text,
             m_key.formerHash.isEmpty() ? QString() : envelope.encode(m_key.formerHash, hashPair),
             m_sealedMark});
        if (isWritten) {
            refreshAutostart();
        }
        return isWritten;
    } catch (const std::exception&) {  // no random numbers: nothing was written
        return false;
    }
}

void User::refreshAutostart() const {
    try {
        m_services.autostart.refresh(Users::GetHashUserTitle(p_userName()), p_kvdbFile());
    } catch (const std::exception&) {
        // The record is what counts; the next write tries again.
    }
}

bool User::isUnreadable() const {
    User stored(m_services);
    return !stored.ReadRegistry(p_userName()) &&
           m_services.regedit.openKey(kMachineRoot, recordKey(p_userName()));
}

bool User::writeValues(const Values& values) {
    // They only make sense together: a password of one write does not open the text of another.
    Regedit& regedit = m_services.regedit;
    const auto setOrDelete = [&regedit](const QString& name, const QString& value) {
        return value.isEmpty() ? regedit.deleteValue(name) : regedit.setString(name, value);
    };
    const bool written = regedit.atomically([&] {
        if (isUnreadable()) {
            regedit.keepFormer();
        }
        return regedit.createKey(kMachineRoot, recordKey(p_userName())) &&
               regedit.setString(QStringLiteral("0"), values.hash) &&
               regedit.setString(QStringLiteral("1"), values.pair) &&
               regedit.setString(QStringLiteral("2"), values.password) &&
               regedit.setString(QStringLiteral("3"), values.text) &&
               setOrDelete(kFormerHash, values.formerHash) &&
               setOrDelete(kSealedMark, values.sealedMark);
    });
    regedit.closeKey();
    if (written) {
        m_recordText = values.text;
    }
    return written;
}

bool User::isAsRecorded() const {
    Regedit& regedit = m_services.regedit;
    const QString text = regedit.openKey(kMachineRoot, recordKey(p_userName()))
                             ? regedit.getString(QStringLiteral("3"))
                             : QString();
    regedit.closeKey();
    return text == m_recordText;
}

int User::p_remainedTimes() const {
    return std::max(0, p_lgnKeyChances0() - p_usedTimes());
}

bool User::p_remLgnKey() const {
    return !m_record.keyPartA.isEmpty() && !m_record.keyPartB.isEmpty();
}

void User::p_remLgnKey(bool value) {
    m_record.keyPartA = value ? m_key.partA : QString();
    m_record.keyPartB = value ? m_key.partB : QString();
}

void User::p_privateFolder(const QString& value) {
    m_record.privateFolder = value;
    while (m_record.privateFolder.size() > 1 && m_record.privateFolder.endsWith(u'/')) {
        m_record.privateFolder.chop(1);
    }
}

QString User::p_userName() const {
    return privatefolder::userNameOf(p_privateFolder());
}

QString User::p_kvdbFile() const {
    return privatefolder::databaseOf(p_privateFolder());
}

QString User::p_plainLgnKey() const {
    if (m_key.partA.isEmpty() || m_key.partB.isEmpty()) {
        return {};
    }
    return Envelope(m_services.random).open({m_key.partA, m_key.partB}, keyPairFor(m_key.partA));
}

void User::p_plainLgnKey(const QString& value) {
    const bool remembers = p_remLgnKey();
    auto sealed = Envelope(m_services.random).seal(value, keyPairFor);
    m_key.partA = sealed.text;
    m_key.partB = sealed.password;
    keepOutOfSwap(m_key.partA);
    keepOutOfSwap(m_key.partB);
    QString hash = Cryptor2::hashString(value);
    if (hash == m_key.formerHash) {
        // The other key stays good until the sealed file has shown which of them is its own.
        m_key.formerHash = m_key.hash;
    }
    m_key.hash = std::move(hash);
    // A remembered key that no longer opens anything would count as an attack at the next login.
    p_remLgnKey(remembers);
}

bool User::takeLgnKey(const QString& key, const QString& formerCopy, const QString& copy) {
    UserRecord otherRecord = m_record;
    Key otherKey = m_key;
    const WipeGuard wipeParts(otherRecord.keyPartA);
    const WipeGuard wipePasswords(otherRecord.keyPartB);
    const WipeGuard wipePartA(otherKey.partA);
    const WipeGuard wipePartB(otherKey.partB);
    // The first key since the last sealing is that of the sealed file.
    const QString sealedHash = m_key.formerHash.isEmpty() ? m_key.hash : m_key.formerHash;
    p_plainLgnKey(key);
    m_key.formerHash = sealedHash == m_key.hash ? QString() : sealedHash;
    m_record.activeFile = copy;
    m_isCopyGivenUp = false;
    if (otherRecord.activeFile != formerCopy || WriteRegistry()) {
        return true;
    }
    // A failure may come behind the replacement of the file; then the old record goes back.
    const auto swapStates = [&] {
        std::swap(m_record, otherRecord);
        std::swap(m_key, otherKey);
    };
    swapStates();
    if (WriteRegistry() || !isRecorded(copy)) {
        throw KeeperError(75, QStringLiteral("User"),
                          QStringLiteral("用户记录无法写入，登录密钥没有修改。"));
    }
    swapStates();
    return false;
}

bool User::isRecorded(const QString& copy) const {
    User onDisk(m_services);
    return onDisk.ReadRegistry(p_userName()) && onDisk.p_activeFile() == copy;
}

bool User::CheckLgnKey(const QString& key) const {
    if (!isInCodePage(key)) {
        return false;  // its digest is also that of a key with "?" in these places
    }
    const QString hash = Cryptor2::hashString(key);
    return hash == m_key.hash || (hash == m_key.formerHash &&
                                  (m_isCopyGivenUp || !QFileInfo::exists(m_record.activeFile)));
}

void User::p_activeFile(const QString& value) {
    if (value != m_record.activeFile) {
        m_record.activeFile = value;
        m_key.formerHash.clear();
        m_isCopyGivenUp = false;
    }
}

void User::p_startupWithOS(bool value) {
    const QString id = Users::GetHashUserTitle(p_userName());
    guardedRun(
        m_services.prompt, QStringLiteral("cUser.p_startupWithOS"),
        [&] {
            if (value) {
                m_services.autostart.add(id, privatefolder::prefix() + p_userName(), p_kvdbFile());
            } else {
                m_services.autostart.remove(id);
            }
            m_startupWithOS = value;
        },
        Prompt::Icon::Exclamation);
}

void User::Clear() {
    m_record.privateFolder.clear();
    p_remLgnKey(false);
    m_record.autoLogin = false;
    m_key.hash.clear();
    m_key.formerHash.clear();
    m_sealedMark.clear();
    m_isCopyGivenUp = false;
    m_key.partA.clear();
    m_key.partB.clear();
}

}  // namespace keeper

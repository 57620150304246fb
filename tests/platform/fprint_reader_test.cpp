// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

// The fingerprint reader against a mock of the service that keeps to its protocol: no verification
// without a claim, no second one beside a running one, no release of a running one.

#include "platform/linux/fprint_reader.h"

#include <QDBusReply>

#include "support/private_bus.h"

namespace keeper {
namespace {

const QString kService = QStringLiteral("net.reactivated.Fprint");
const QString kManager = QStringLiteral("/net/reactivated/Fprint/Manager");
const QString kDevice = QStringLiteral("/net/reactivated/Fprint/Device/0");
const QString kManagerInterface = QStringLiteral("net.reactivated.Fprint.Manager");
const QString kDeviceInterface = QStringLiteral("net.reactivated.Fprint.Device");

class FprintReaderTest : public testing::Test {
  protected:
    void startService() {
        m_bus.mock({QStringLiteral("--system"), kService, kManager, kManagerInterface}, kService);
        addMethod(
            kManager, kManagerInterface, "AddDevice", "", "",
            QStringLiteral("self.AddObject('%1', '%2', {}, [])").arg(kDevice, kDeviceInterface));
        call(kManager, kManagerInterface, "AddDevice");
        addMethod(kManager, kManagerInterface, "GetDefaultDevice", "", "o",
                  QStringLiteral("ret = '%1'").arg(kDevice));
        setFingers(QStringLiteral("['right-index-finger']"));
        struct {
            const char* name;
            const char* in;
            const char* condition;
            const char* effect;
        } const methods[] = {
            {"Claim", "s", "not getattr(self, 'claimed', 0)",
             "self.claimed = 1; self.verifying = 0"},
            {"VerifyStart", "s", "self.claimed and not self.verifying", "self.verifying = 1"},
            {"VerifyStop", "", "self.verifying", "self.verifying = 0"},
            {"Release", "", "self.claimed and not self.verifying", "self.claimed = 0"}};
        for (const auto& method : methods) {
            addMethod(kDevice, kDeviceInterface, method.name, method.in, "",
                      QStringLiteral("if not (%1): raise dbus.exceptions.DBusException('x')\n%2")
                          .arg(QLatin1String(method.condition), QLatin1String(method.effect)));
        }
        addMethod(kDevice, kDeviceInterface, "State", "", "s",
                  QStringLiteral("ret = '%d%d' % (getattr(self, 'claimed', 0), "
                                 "getattr(self, 'verifying', 0))"));
    }
    QDBusMessage call(const QString& path, const QString& interface, const char* method,
                      const QVariantList& arguments = {}) {
        QDBusMessage message =
            QDBusMessage::createMethodCall(kService, path, interface, QString::fromLatin1(method));
        message.setArguments(arguments);
        QDBusMessage reply = m_bus.connection().call(message);
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << qPrintable(reply.errorMessage());
        return reply;
    }
    void addMethod(const QString& path, const QString& interface, const char* name, const char* in,
                   const char* out, const QString& code) {
        call(path, QStringLiteral("org.freedesktop.DBus.Mock"), "AddMethod",
             {interface, QString::fromLatin1(name), QString::fromLatin1(in),
              QString::fromLatin1(out), code});
    }
    void setFingers(const QString& list) {
        addMethod(kDevice, kDeviceInterface, "ListEnrolledFingers", "s", "as",
                  QStringLiteral("ret = ") + list);
    }
    /// Claimed, verifying.
    QString state() {
        return call(kDevice, kDeviceInterface, "State").arguments().value(0).toString();
    }
    void touch(const char* result, bool isDone) {
        m_bus.emitSignal(kService, kDevice, kDeviceInterface, QStringLiteral("VerifyStatus"),
                         QStringLiteral("sb"), {QString::fromLatin1(result), isDone});
    }
    bool start() {
        return m_reader.start(
            [this](FingerprintReader::Outcome outcome) { m_outcomes.push_back(outcome); });
    }
    bool isFound() {
        std::optional<bool> found;
        m_reader.lookFor([&](bool isAvailable) { found = isAvailable; });
        EXPECT_TRUE(QTest::qWaitFor([&] { return found.has_value(); }, 5000));
        return found == true;
    }
    bool waitFor(std::size_t count) {
        return QTest::qWaitFor([&] { return m_outcomes.size() >= count; }, 5000);
    }

    PrivateBus m_bus;
    FprintReader m_reader{m_bus.connection()};
    std::vector<FingerprintReader::Outcome> m_outcomes;
};

TEST_F(FprintReaderTest, OnlyAReaderThatKnowsAFingerIsOffered) {
    EXPECT_FALSE(m_reader.isAvailable()) << "no service";
    EXPECT_FALSE(start());
    startService();
    EXPECT_TRUE(m_reader.isAvailable());
    EXPECT_TRUE(isFound());
    setFingers(QStringLiteral("[]"));
    EXPECT_FALSE(m_reader.isAvailable()) << "no finger";
    EXPECT_FALSE(isFound());
    addMethod(kManager, kManagerInterface, "GetDefaultDevice", "", "o",
              QStringLiteral("raise dbus.exceptions.DBusException('', "
                             "name='net.reactivated.Fprint.Error.NoSuchDevice')"));
    EXPECT_FALSE(m_reader.isAvailable()) << "no device";
    EXPECT_FALSE(isFound());
    EXPECT_FALSE(start());
}

TEST_F(FprintReaderTest, AFingerIsJudgedAndTheReaderSetFree) {
    startService();
    ASSERT_TRUE(start());
    EXPECT_EQ(state(), QStringLiteral("11"));
    touch("verify-retry-scan", false);
    touch("verify-no-match", true);
    ASSERT_TRUE(waitFor(2));
    EXPECT_EQ(state(), QStringLiteral("11")) << "it waits for the next finger";
    touch("verify-match", true);
    ASSERT_TRUE(waitFor(3));
    EXPECT_EQ(m_outcomes, (std::vector{FingerprintReader::Outcome::TryAgain,
                                       FingerprintReader::Outcome::NoMatch,
                                       FingerprintReader::Outcome::Match}));
    EXPECT_EQ(state(), QStringLiteral("00"));

    ASSERT_TRUE(start());
    m_reader.stop();
    EXPECT_EQ(state(), QStringLiteral("00"));
    touch("verify-match", true);
    QTest::qWait(100);
    EXPECT_EQ(m_outcomes.size(), 3U) << "nobody waits any more";
}

TEST_F(FprintReaderTest, AReaderThatIsTakenOrGoesAwayIsTold) {
    startService();
    call(kDevice, kDeviceInterface, "Claim", {QString(QLatin1String(""))});
    EXPECT_FALSE(start()) << "another program has it";
    call(kDevice, kDeviceInterface, "Release");
    ASSERT_TRUE(start());
    touch("verify-disconnected", true);
    ASSERT_TRUE(waitFor(1));
    EXPECT_EQ(m_outcomes.back(), FingerprintReader::Outcome::Disconnected);
    EXPECT_EQ(state(), QStringLiteral("00"));
    ASSERT_TRUE(start());
    m_bus.stopMocks();
    ASSERT_TRUE(waitFor(2));
    EXPECT_EQ(m_outcomes.back(), FingerprintReader::Outcome::Disconnected);
}

}  // namespace
}  // namespace keeper

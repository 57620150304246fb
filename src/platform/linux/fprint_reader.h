// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

#include "platform/fingerprint_reader.h"

class QDBusServiceWatcher;

namespace keeper {

/// The reader behind fprintd, by its D-Bus interface. A machine without that service, without a
/// device or without a finger of the desktop's user has no reader.
class FprintReader final : public QObject, public FingerprintReader {
    Q_OBJECT

  public:
    /// `systemBus` is where fprintd answers; connecting to it is left to the first question when
    /// none is given.
    FprintReader();
    explicit FprintReader(const QDBusConnection& systemBus);
    ~FprintReader() override;

    [[nodiscard]] bool isAvailable() override;
    void lookFor(std::function<void(bool isAvailable)> tell) override;
    [[nodiscard]] bool start(std::function<void(Outcome)> tell) override;
    void stop() override;

  private Q_SLOTS:
    void onVerifyStatus(const QString& result, bool isDone);

  private:
    [[nodiscard]] bool connectBus();
    /// Calls without waiting and hands the first argument of the answer on; an error is an invalid
    /// value.
    void askLater(const QString& path, const QString& interface, const QString& method,
                  const QVariantList& arguments, std::function<void(const QVariant&)> take);
    /// Path of the default device; empty without one.
    [[nodiscard]] QString defaultDevice();
    /// The answer, within the service's patience; none on an error.
    std::optional<QDBusMessage> ask(const QString& path, const QString& interface,
                                    const QString& method, const QVariantList& arguments = {});
    std::optional<QDBusMessage> askDevice(const QString& method, const QString& argument);
    /// Without waiting for an answer; calls arrive in their order all the same.
    void tellDevice(const QString& method);
    void finish(Outcome outcome);

    std::unique_ptr<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    /// The claimed device; empty while nothing runs.
    QString m_device;
    std::function<void(Outcome)> m_tell;
};

}  // namespace keeper

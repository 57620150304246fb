// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDateTime>
#include <QString>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/clock.h"
#include "platform/database.h"
#include "platform/prompt.h"

namespace keeper {

/// All rows of one settings table; they count from 1, as the row numbers in the database do.
template <typename Value, std::size_t count>
class SettingRows {
  public:
    [[nodiscard]] const Value& row(std::size_t number) const { return m_values.at(number - 1); }
    [[nodiscard]] Value& row(std::size_t number) { return m_values.at(number - 1); }
    [[nodiscard]] static constexpr std::size_t size() { return count; }

  private:
    std::array<Value, count> m_values{};
};

/// The settings of the open database: six tables of typed rows, addressed by position alone. The
/// positions are part of the file format; rows that no member names are read and written with the
/// rest. Valid from ReadDB() or NewBuild() on; changes reach the database with WriteDB() only.
class Settings {
  public:
    Settings(Database& database, Prompt& prompt, const Clock& clock);

    /// Reads all rows. A missing row and a value outside its type are failures: the box is shown,
    /// `message` tells why, and the rows in memory stay as they were. Surplus rows are not looked
    /// at.
    bool ReadDB(QString& message);
    /// After a false ReadDB(): true when the engine could not get at the data (input and output, a
    /// lock, memory, a damaged page), false when the database reads well but lacks what it must
    /// hold. Only the latter is a fault of the database.
    [[nodiscard]] bool p_isUnreadable() const { return m_isUnreadable; }
    /// Writes all rows in one transaction: into the empty tables of a new database, or over the
    /// rows that stand. A failure is shown and changes nothing.
    bool WriteDB(bool isNew);
    /// The values of a new database of `userName`, written. Of the rows in memory only the digest
    /// of the independent password and the two hints stay.
    bool NewBuild(const QString& userName);
    /// Turns settings whose meaning has changed since data version `fromVersion`; in memory.
    bool UpgradeDatabase(std::uint8_t fromVersion);

    /// Bit `index` (0 to 30) of p_Authorities, as 1 or 0; any other index is 0.
    [[nodiscard]] int GetAuthority(int index) const;
    /// 1 sets the bit, anything else clears it. An index outside 0 to 30 changes nothing.
    void SetAuthority(int value, int index);

    /// Sets p_idpPwdChances1 and writes it at once. Throws, and changes nothing, when that fails.
    void KeepIdpPwdChances(int left);

    /// Keeps the digest of a new independent password; the empty one switches it off.
    void SetHashIdpPwd(const QString& password);
    /// Takes a change back whose writing failed.
    void RestoreIdpPwdHashCode(const QString& digest) { m_rows.texts.row(3) = digest; }

    /// Called with each new hint of the login key, for the record of the user.
    std::function<void(const QString&)> onLgnKeyTip;

    // Table tb_TypeBoolean
    /// Pressing Enter fills automatically.
    [[nodiscard]] bool p_autoEnter() const { return m_rows.booleans.row(1); }
    void p_autoEnter(bool value) { m_rows.booleans.row(1) = value; }
    /// Automatic locking is on.
    [[nodiscard]] bool p_autoLock() const { return m_rows.booleans.row(2); }
    void p_autoLock(bool value) { m_rows.booleans.row(2) = value; }
    /// Form of the associated-number tool tip.
    [[nodiscard]] bool p_assNumToolTipType() const { return m_rows.booleans.row(3); }
    void p_assNumToolTipType(bool value) { m_rows.booleans.row(3) = value; }
    /// True: exit backup runs every p_backupDays days; false: at every exit.
    [[nodiscard]] bool p_backupPeriod() const { return m_rows.booleans.row(4); }
    void p_backupPeriod(bool value) { m_rows.booleans.row(4) = value; }
    /// Kind of exit backup.
    [[nodiscard]] bool p_backupType() const { return m_rows.booleans.row(5); }
    void p_backupType(bool value) { m_rows.booleans.row(5) = value; }
    /// Clear the clipboard at exit.
    [[nodiscard]] bool p_clearClpbrd() const { return m_rows.booleans.row(6); }
    void p_clearClpbrd(bool value) { m_rows.booleans.row(6) = value; }
    /// Closing the main form hides it to the tray.
    [[nodiscard]] bool p_close2Tray() const { return m_rows.booleans.row(7); }
    void p_close2Tray(bool value) { m_rows.booleans.row(7) = value; }
    /// The list shows a single line of content.
    [[nodiscard]] bool p_contentSingle() const { return m_rows.booleans.row(8); }
    void p_contentSingle(bool value) { m_rows.booleans.row(8) = value; }
    /// How the lifetime on a branch machine is counted.
    [[nodiscard]] bool p_deadCountType() const { return m_rows.booleans.row(9); }
    void p_deadCountType(bool value) { m_rows.booleans.row(9) = value; }
    /// Beep on one-key fill.
    [[nodiscard]] bool p_fillBeep() const { return m_rows.booleans.row(10); }
    void p_fillBeep(bool value) { m_rows.booleans.row(10) = value; }
    /// Hide the database path at login.
    [[nodiscard]] bool p_hideDBPath() const { return m_rows.booleans.row(11); }
    void p_hideDBPath(bool value) { m_rows.booleans.row(11) = value; }
    /// The independent password is required.
    [[nodiscard]] bool p_idpPwdSwitch() const { return m_rows.booleans.row(12); }
    void p_idpPwdSwitch(bool value) { m_rows.booleans.row(12) = value; }
    /// Keep the main form on top.
    [[nodiscard]] bool p_keepMainFront() const { return m_rows.booleans.row(14); }
    void p_keepMainFront(bool value) { m_rows.booleans.row(14) = value; }
    /// Show the tip of the day.
    [[nodiscard]] bool p_loadTips() const { return m_rows.booleans.row(15); }
    void p_loadTips(bool value) { m_rows.booleans.row(15) = value; }
    /// Report the last login after logging in.
    [[nodiscard]] bool p_loginReport() const { return m_rows.booleans.row(16); }
    void p_loginReport(bool value) { m_rows.booleans.row(16) = value; }
    /// Use the background picture.
    [[nodiscard]] bool p_themeBackground() const { return m_rows.booleans.row(17); }
    void p_themeBackground(bool value) { m_rows.booleans.row(17) = value; }
    /// Export format.
    [[nodiscard]] bool p_checkoutFormat() const { return m_rows.booleans.row(18); }
    void p_checkoutFormat(bool value) { m_rows.booleans.row(18) = value; }
    /// Show numbers as masked text.
    [[nodiscard]] bool p_implicitlyShowNum() const { return m_rows.booleans.row(19); }
    void p_implicitlyShowNum(bool value) { m_rows.booleans.row(19) = value; }
    /// Show passwords as masked text.
    [[nodiscard]] bool p_implicitlyShowPwd() const { return m_rows.booleans.row(20); }
    void p_implicitlyShowPwd(bool value) { m_rows.booleans.row(20) = value; }
    /// The manager locks itself when the desktop locks its screen or the machine goes to sleep. The
    /// row says the opposite, so that databases without it have this switched on.
    [[nodiscard]] bool p_lockWithScreen() const { return !m_rows.booleans.row(21); }
    void p_lockWithScreen(bool value) { m_rows.booleans.row(21) = !value; }

    // Table tb_TypeByte
    /// Number of the current tip of the day.
    [[nodiscard]] std::uint8_t p_curTip() const { return m_rows.bytes.row(1); }
    void p_curTip(std::uint8_t value) { m_rows.bytes.row(1) = value; }
    /// Main window size: 0 is the compact form.
    [[nodiscard]] std::uint8_t p_mainSizeType() const { return m_rows.bytes.row(2); }
    void p_mainSizeType(std::uint8_t value) { m_rows.bytes.row(2) = value; }
    /// Attempts allowed for the independent password. Another number restores all of them.
    [[nodiscard]] std::uint8_t p_idpPwdChances0() const { return m_rows.bytes.row(3); }
    void p_idpPwdChances0(std::uint8_t value);
    /// Attempts allowed for the login key.
    [[nodiscard]] std::uint8_t p_lgnKeyChances0() const { return m_rows.bytes.row(4); }
    void p_lgnKeyChances0(std::uint8_t value) { m_rows.bytes.row(4) = value; }
    /// Last main tab.
    [[nodiscard]] std::uint8_t p_mainTabNo() const { return m_rows.bytes.row(5); }
    void p_mainTabNo(std::uint8_t value) { m_rows.bytes.row(5) = value; }
    /// Last option tab.
    [[nodiscard]] std::uint8_t p_optionTabNo() const { return m_rows.bytes.row(6); }
    void p_optionTabNo(std::uint8_t value) { m_rows.bytes.row(6) = value; }
    /// Bit set of entry kinds that are reminded of.
    [[nodiscard]] std::uint8_t p_entPwdModifyType() const { return m_rows.bytes.row(7); }
    void p_entPwdModifyType(std::uint8_t value) { m_rows.bytes.row(7) = value; }
    /// Main window hot key.
    [[nodiscard]] std::uint8_t p_mainHotKey() const { return m_rows.bytes.row(8); }
    void p_mainHotKey(std::uint8_t value) { m_rows.bytes.row(8) = value; }
    /// Fill mode.
    [[nodiscard]] std::uint8_t p_oneKeyMode() const { return m_rows.bytes.row(9); }
    void p_oneKeyMode(std::uint8_t value) { m_rows.bytes.row(9) = value; }
    /// Key that fills the number alone.
    [[nodiscard]] std::uint8_t p_singleFillNum() const { return m_rows.bytes.row(10); }
    void p_singleFillNum(std::uint8_t value) { m_rows.bytes.row(10) = value; }
    /// Key that fills the password alone.
    [[nodiscard]] std::uint8_t p_singleFillPwd() const { return m_rows.bytes.row(11); }
    void p_singleFillPwd(std::uint8_t value) { m_rows.bytes.row(11) = value; }

    // Table tb_TypeInteger
    /// Exit backup period in days.
    [[nodiscard]] std::int16_t p_backupDays() const { return m_rows.integers.row(1); }
    void p_backupDays(std::int16_t value) { m_rows.integers.row(1) = value; }
    /// Rows in the recent-update sheet.
    [[nodiscard]] std::int16_t p_recentUpdateAmount() const { return m_rows.integers.row(2); }
    void p_recentUpdateAmount(std::int16_t value) { m_rows.integers.row(2) = value; }
    /// Reminder period of the independent password, days.
    [[nodiscard]] std::int16_t p_idpPwdModifyDays() const { return m_rows.integers.row(3); }
    void p_idpPwdModifyDays(std::int16_t value) { m_rows.integers.row(3) = value; }
    /// Reminder period of the login key, days.
    [[nodiscard]] std::int16_t p_lgnKeyModifyDays() const { return m_rows.integers.row(4); }
    void p_lgnKeyModifyDays(std::int16_t value) { m_rows.integers.row(4) = value; }
    /// Reminder period of the security questions, days.
    [[nodiscard]] std::int16_t p_sqUpdateDays() const { return m_rows.integers.row(5); }
    void p_sqUpdateDays(std::int16_t value) { m_rows.integers.row(5) = value; }
    /// Reminder period of entry passwords, days.
    [[nodiscard]] std::int16_t p_entPwdModifyDays() const { return m_rows.integers.row(6); }
    void p_entPwdModifyDays(std::int16_t value) { m_rows.integers.row(6) = value; }
    /// Period of the network backup reminder, days.
    [[nodiscard]] std::int16_t p_networkBackupDays() const { return m_rows.integers.row(7); }
    void p_networkBackupDays(std::int16_t value) { m_rows.integers.row(7) = value; }

    // Table tb_TypeLong
    /// Bit set of second-level authorities.
    [[nodiscard]] std::int32_t p_Authorities() const { return m_rows.longs.row(1); }
    void p_Authorities(std::int32_t value) { m_rows.longs.row(1) = value; }
    /// Idle seconds before automatic locking.
    [[nodiscard]] std::int32_t p_autoLockSecs() const { return m_rows.longs.row(2); }
    void p_autoLockSecs(std::int32_t value) { m_rows.longs.row(2) = value; }
    /// Window background colour (system colour index).
    [[nodiscard]] std::int32_t p_backgroundColor() const { return m_rows.longs.row(3); }
    void p_backgroundColor(std::int32_t value) { m_rows.longs.row(3) = value; }
    /// Text colour (system colour index).
    [[nodiscard]] std::int32_t p_foregroundColor() const { return m_rows.longs.row(4); }
    void p_foregroundColor(std::int32_t value) { m_rows.longs.row(4) = value; }
    /// Left edge of the compact main form, twips.
    [[nodiscard]] std::int32_t p_minLeft() const { return m_rows.longs.row(5); }
    void p_minLeft(std::int32_t value) { m_rows.longs.row(5) = value; }
    /// Main form width, twips.
    [[nodiscard]] std::int32_t p_orgWidth() const { return m_rows.longs.row(6); }
    void p_orgWidth(std::int32_t value) { m_rows.longs.row(6) = value; }
    /// Main form height, twips.
    [[nodiscard]] std::int32_t p_orgHeight() const { return m_rows.longs.row(7); }
    void p_orgHeight(std::int32_t value) { m_rows.longs.row(7) = value; }
    /// Width of the navigation sheets, twips.
    [[nodiscard]] std::int32_t p_sheetsWidth() const { return m_rows.longs.row(8); }
    void p_sheetsWidth(std::int32_t value) { m_rows.longs.row(8) = value; }

    // Table tb_TypeDate
    /// Start of the exit backup period.
    [[nodiscard]] const QDateTime& p_backupStart() const { return m_rows.dates.row(1); }
    void p_backupStart(const QDateTime& value) { m_rows.dates.row(1) = value; }
    /// Start of the independent password reminder.
    [[nodiscard]] const QDateTime& p_idpPwdModifyStart() const { return m_rows.dates.row(2); }
    void p_idpPwdModifyStart(const QDateTime& value) { m_rows.dates.row(2) = value; }
    /// Start of the login key reminder.
    [[nodiscard]] const QDateTime& p_lgnKeyModifyStart() const { return m_rows.dates.row(3); }
    void p_lgnKeyModifyStart(const QDateTime& value) { m_rows.dates.row(3) = value; }
    /// Start of the security question reminder.
    [[nodiscard]] const QDateTime& p_sqUpdateStart() const { return m_rows.dates.row(4); }
    void p_sqUpdateStart(const QDateTime& value) { m_rows.dates.row(4) = value; }
    /// Start of the network backup reminder.
    [[nodiscard]] const QDateTime& p_networkBackupStart() const { return m_rows.dates.row(5); }
    void p_networkBackupStart(const QDateTime& value) { m_rows.dates.row(5) = value; }
    /// Last log synchronisation.
    [[nodiscard]] const QDateTime& p_lastSynchDate() const { return m_rows.dates.row(6); }
    void p_lastSynchDate(const QDateTime& value) { m_rows.dates.row(6) = value; }

    // Table tb_TypeText
    /// Background picture, reduced path form.
    [[nodiscard]] const QString& p_backImagePath() const { return m_rows.texts.row(1); }
    void p_backImagePath(const QString& value) { m_rows.texts.row(1) = value; }
    /// Exit backup folder, reduced path form.
    [[nodiscard]] const QString& p_backupPath() const { return m_rows.texts.row(2); }
    void p_backupPath(const QString& value) { m_rows.texts.row(2) = value; }
    /// Read-only member; SetHashIdpPwd() sets it.
    [[nodiscard]] const QString& p_idpPwdHashCode() const { return m_rows.texts.row(3); }
    /// Hint of the independent password.
    [[nodiscard]] const QString& p_idpPwdTip() const { return m_rows.texts.row(4); }
    void p_idpPwdTip(const QString& value) { m_rows.texts.row(4) = value; }
    /// Hint of the login key; see onLgnKeyTip.
    [[nodiscard]] const QString& p_lgnKeyTip() const { return m_rows.texts.row(5); }
    void p_lgnKeyTip(const QString& value);

    // Reminders apply to network objects, to applications, to user files
    [[nodiscard]] bool p_remindWeb() const { return reminds(0); }
    void p_remindWeb(bool value) { setReminds(0, value); }
    [[nodiscard]] bool p_remindClp() const { return reminds(1); }
    void p_remindClp(bool value) { setReminds(1, value); }
    [[nodiscard]] bool p_remindFil() const { return reminds(2); }
    void p_remindFil(bool value) { setReminds(2, value); }

    // Attempts left. Those of the login key are counted in this session alone; those of the
    // independent password carry over to the next.
    [[nodiscard]] std::int16_t p_lgnKeyChances1() const { return m_lgnKeyChances1; }
    void p_lgnKeyChances1(std::int16_t value) { m_lgnKeyChances1 = value; }
    [[nodiscard]] std::int16_t p_idpPwdChances1() const;
    void p_idpPwdChances1(std::int16_t value);

  private:
    bool m_isUnreadable = false;
    struct Tables {
        SettingRows<bool, 25> booleans;
        SettingRows<std::uint8_t, 15> bytes;
        SettingRows<std::int16_t, 15> integers;
        SettingRows<std::int32_t, 15> longs;
        SettingRows<QDateTime, 10> dates;
        SettingRows<QString, 10> texts;
    };

    [[nodiscard]] bool reminds(unsigned bit) const;
    void setReminds(unsigned bit, bool value);

    Database& m_database;
    Prompt& m_prompt;
    const Clock& m_clock;
    Tables m_rows;
    std::int16_t m_lgnKeyChances1 = 0;
};

}  // namespace keeper

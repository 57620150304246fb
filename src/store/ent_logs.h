// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>
#include <cstdint>
#include <vector>

#include "store/store_context.h"

namespace keeper {

/// One row of an entry's password history.
class EntLog {
  public:
    static constexpr int kCreateEntry = 1;
    static constexpr int kModifyPassword = 2;

    EntLog() = default;
    EntLog(const EntLog&) = default;
    EntLog(EntLog&&) noexcept = default;
    EntLog& operator=(const EntLog&) = default;
    EntLog& operator=(EntLog&&) noexcept = default;
    ~EntLog();

    [[nodiscard]] QString GetStatus() const;
    /// Splits a whole number.
    void p_No(const QString& wholeNumber);
    /// What happened to which entry, at `now`. Any status but kModifyPassword empties the password
    /// name and the old password.
    void SetEntry(const QString& wholeNumber, std::int32_t status, const QDateTime& now);
    void SetEntry2(const QString& dirPath, const QString& entNo, std::int32_t status,
                   const QDateTime& now);
    /// For kModifyPassword: the binding at that time and the former password.
    void SetOrgPwd(const QString& pwdName, const QString& originalPwd);

    [[nodiscard]] const QString& p_dirPath() const { return m_dirPath; }
    void p_dirPath(const QString& value) { m_dirPath = value; }
    [[nodiscard]] const QString& p_entNo() const { return m_entNo; }
    void p_entNo(const QString& value) { m_entNo = value; }
    [[nodiscard]] const QDateTime& p_dateTime() const { return m_dateTime; }
    void p_dateTime(const QDateTime& value) { m_dateTime = value; }
    [[nodiscard]] std::int32_t p_statusNo() const { return m_statusNo; }
    void p_statusNo(std::int32_t value) { m_statusNo = value; }
    [[nodiscard]] const QString& p_pwdName() const { return m_pwdName; }
    void p_pwdName(const QString& value) { m_pwdName = value; }
    /// Plain in memory; wiped at the end.
    [[nodiscard]] const QString& p_originalPwd() const { return m_originalPwd; }
    void p_originalPwd(const QString& value) { m_originalPwd = value; }

  private:
    QString m_dirPath;
    QString m_entNo;
    QDateTime m_dateTime;
    std::int32_t m_statusNo = 0;
    QString m_pwdName;
    QString m_originalPwd;
};

/// A line of the entry log as people read it; `password` holds a secret and is wiped at the end.
struct EntLogLine {
    int no = 0;
    QString dateTime;
    QString number;
    QString status;
    /// Binding, "：" and the former password, or "(不予显示)" for a row without a binding.
    QString password;

    EntLogLine() = default;
    EntLogLine(const EntLogLine&) = default;
    EntLogLine(EntLogLine&&) noexcept = default;
    EntLogLine& operator=(const EntLogLine&) = default;
    EntLogLine& operator=(EntLogLine&&) noexcept = default;
    ~EntLogLine();
};

/// The table of the entry log. Its rows are tied to an entry by the number alone: they stay when
/// the entry goes or moves. Failures are shown as "[number]EntLogs.Operation:" and give the default
/// result.
class EntLogs {
  public:
    explicit EntLogs(const StoreContext& context) : m_context(context) {}

    /// The rows of an entry (of all with an empty number) in a period, newest first. An invalid day
    /// is none given; status 0 stands for all.
    bool Display(std::vector<EntLogLine>& lines, const QString& number, const QDate& from,
                 const QDate& to, std::int32_t status, int& count);
    bool Add(const EntLog& log);
    /// Add() inside a transaction of the caller, who shows what it throws after the rollback.
    void insertRow(const EntLog& log);
    /// Deletes the history of one entry. Returns the rows deleted.
    int Delete(const QString& number);
    /// Deletes what is more than `days` days old, or with 0 everything. Returns the rows deleted.
    int Clear(std::int16_t days);
    /// Rows of one entry, or of all with an empty number.
    int Count(const QString& number);

  private:
    StoreContext m_context;
};

}  // namespace keeper

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <optional>

#include "app/file_operator.h"
#include "app/settings.h"
#include "platform/clock.h"
#include "platform/prompt.h"
#include "store/ass_nums.h"
#include "store/ass_pwds.h"
#include "store/companions.h"
#include "store/directories.h"
#include "store/entries.h"
#include "store/sys_logs.h"
#include "workspace/item_list_model.h"
#include "workspace/item_tree_model.h"
#include "workspace/ports.h"

namespace keeper {

/// What the main window works with. The composition root makes the objects and outlives all.
struct WorkspaceServices {
    Prompt& prompt;
    const Clock& clock;
    const FileOperator& files;
    Settings& settings;
    Directories& directories;
    Entries& entries;
    Webs& webs;
    Prgs& prgs;
    Fils& fils;
    AssPwds& assPwds;
    AssNums& assNums;
    SysLogs& sysLogs;
    AuthorityGate& gate;
    FillMonitorPort& monitor;
    DigestPort& digest;
    Beeper& beeper;
    WorkspaceView& view;
};

enum class EditState { Browse = 0, Modify = 1, Add = 2 };

/// Bits of the settings' authorities that the main window asks for.
enum Authority { kActivateDiscarded = 0, kRestoreOriginalSize = 1, kDeleteProtectedFile = 7 };

/// The entry in the pane, as the database holds it: what the pane's fields are compared with.
struct ShownEntry {
    Entry common;
    /// Address or path, in stored form.
    QString location;
    /// Name of the associated number, or the reserved one; empty for a file.
    QString numName;
    /// A number of its own, and the value behind the binding of the password; wiped at the end.
    QString customNum;
    QString password;

    ShownEntry() = default;
    ShownEntry(const ShownEntry&) = delete;
    ShownEntry& operator=(const ShownEntry&) = delete;
    ShownEntry(ShownEntry&&) noexcept = default;
    ShownEntry& operator=(ShownEntry&& other) noexcept;
    ~ShownEntry();
};

/// State that the parts of the main window share, and the models of its sheets.
class Workspace {
  public:
    explicit Workspace(const WorkspaceServices& theServices) : services(theServices) {}

    const WorkspaceServices services;

    EditState m_editState = EditState::Browse;
    /// One entry and back to browse; otherwise the state stays and walks on.
    bool m_isSingle = true;
    /// Big class that the indicator shows.
    int m_optType = 0;
    std::optional<ShownEntry> m_entry;
    /// Number of the entry whose file is in the cipher; empty otherwise.
    QString m_cryptNo;

    ItemTreeModel tvwDirectory;
    ItemListModel lsbSearch{tvwDirectory};
    ItemListModel lsbRecentUpdate{tvwDirectory};
    ItemListModel lsbBookmark{tvwDirectory};

    /// The file of the entry is being encrypted or decrypted just now.
    [[nodiscard]] bool isInCipher(const QString& number) const {
        return !m_cryptNo.isEmpty() && m_cryptNo == number;
    }
    void tell(const QString& text) const {
        services.prompt.messageBox(text, Prompt::Icon::Exclamation);
    }
    /// `values` are joined by tabs.
    void log(std::int32_t status, const QStringList& values, std::int32_t count = 0) const;
};

/// Shared by commands that only work while nothing is edited, and by those of discarded entries.
namespace workspacetext {
[[nodiscard]] QString browseOnly();
[[nodiscard]] QString discarded();
[[nodiscard]] QString fileInCipher();
}  // namespace workspacetext

}  // namespace keeper

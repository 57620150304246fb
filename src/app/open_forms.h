// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <QString>
#include <array>
#include <cstddef>

namespace keeper {

/// A form that must not stay open while the manager is locked. Its load reports itself to
/// OpenForms::ManageForms() with true, its unload with false.
class OpenForm {
  public:
    virtual ~OpenForm() = default;
    /// As in the table of OpenForms, such as "dlgAbout".
    [[nodiscard]] virtual QString formName() const = 0;
    /// Unloads the form, whatever it waits for.
    virtual void closeForm() = 0;
    /// Brings it to the front.
    virtual void activateForm() = 0;
};

/// The table of open dialogs. Holds no form: each lives as long as its owner lets it.
class OpenForms {
  public:
    /// A form that the table does not name is no concern of it.
    void ManageForms(OpenForm& form, bool isOpen);
    [[nodiscard]] bool IsAnyFormOn() const;
    /// Closes each open form in the order of the table.
    void CloseForms();
    /// Brings the last open form of the table to the front.
    void ActivateForm();

  private:
    static constexpr std::size_t rows = 25;
    std::array<OpenForm*, rows> m_forms{};
};

}  // namespace keeper

// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "protection_parts.h"

#include <QApplication>

#include "app/system.h"
#include "ui/dlg_authentication.h"

namespace keeper {
namespace {

/// In the table of open forms for as long as it stands.
class FormOnShow {
  public:
    FormOnShow(System& system, OpenForm& form) : m_system(system), m_form(form) {
        m_system.ManageForms(m_form, true);
    }
    ~FormOnShow() { m_system.ManageForms(m_form, false); }
    FormOnShow(const FormOnShow&) = delete;
    FormOnShow& operator=(const FormOnShow&) = delete;

  private:
    System& m_system;
    OpenForm& m_form;
};

}  // namespace

ProtectionParts::ProtectionParts(const ProtectionPorts& ports)
    : m_ports(ports),
      secret({ports.prompt, ports.clock, ports.system, ports.sealed, ports.logs}),
      authentication({ports.prompt, ports.system, secret, ports.fingerprints}) {}

Authentication::Result ProtectionParts::authenticate(Authentication::SecretType type) {
    authentication.load(type);
    showAuthentication();
    return authentication.result();
}

bool ProtectionParts::unlockColumns() {
    return authenticate(Authentication::SecretType::KeepPassword) ==
           Authentication::Result::Verified;
}

bool ProtectionParts::verifyFinger(QString& userName) {
    authentication.loadFinger(userName);
    showAuthentication();
    userName = authentication.state().userName;
    return authentication.result() == Authentication::Result::Verified;
}

void ProtectionParts::showAuthentication() {
    dlgAuthentication form(authentication, m_ports.keyboard, QApplication::activeWindow());
    const FormOnShow shown(m_ports.system, form);
    form.run();
}

}  // namespace keeper

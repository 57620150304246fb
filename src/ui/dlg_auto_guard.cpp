// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/dlg_auto_guard.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include "ui/widgets/named.h"

namespace keeper {
namespace {

/// Lets every text in, so that the logic can say what is wrong with it.
class TimeBox final : public QSpinBox {
  public:
    using QSpinBox::QSpinBox;
    /// The line is the control that carries the text's name.
    [[nodiscard]] QLineEdit* line() const { return lineEdit(); }

  protected:
    QValidator::State validate(QString& text, int& position) const override {
        const QValidator::State state = QSpinBox::validate(text, position);
        return state == QValidator::Invalid ? QValidator::Intermediate : state;
    }
};

struct FrameNames {
    const char* frame;
    const char* option;
    const char* text;
    const char* spinner;
};

constexpr std::array<FrameNames, AutoGuardSettings::kFrames> kNames{
    {{"fraAutoLock", "optAutoLock", "txtAutoLock", "udAutoLock"},
     {"fraAutoExit", "optAutoExit", "txtAutoExit", "udAutoExit"}}};

template <typename Control>
Control* numbered(Control* control, const char* name, std::size_t index) {
    control->setObjectName(QString::fromLatin1(name) + QString::number(index));
    return control;
}

}  // namespace

dlgAutoGuard::dlgAutoGuard(AutoGuardSettings& logic)
    : SessionDialog("dlgAutoGuard"), m_logic(logic) {
    setWindowTitle(QStringLiteral("自动保护"));
    // In the order of the eye, which is that of the Tab key too.
    QBoxLayout* layout = makeLayout();
    layout->addWidget(buildFrame(AutoGuardSettings::fraAutoLock));
    layout->addWidget(buildFrame(AutoGuardSettings::fraAutoExit));
    cmdCancel = named(new QPushButton(QStringLiteral("关闭(&X)"), this), "cmdCancel");
    cmdCancel->setAutoDefault(false);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    layout->addWidget(cmdCancel, 0, Qt::AlignRight);
    // Enter is for the frame where the person works.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* /*old*/, QWidget* now) {
        for (const FrameControls& controls : m_frames) {
            if (controls.box->isAncestorOf(now)) {
                controls.cmdOK->setDefault(true);
            }
        }
    });
    m_logic.changed = [this] { updateState(); };
    updateState();
}

dlgAutoGuard::~dlgAutoGuard() {
    m_logic.changed = nullptr;
}

QGroupBox* dlgAutoGuard::buildFrame(Frame frame) {
    const bool isLock = frame == AutoGuardSettings::fraAutoLock;
    FrameControls& controls = m_frames.at(frame);
    auto* box = new QGroupBox(
        isLock ? QStringLiteral("管理器在鼠标、键盘空闲") : QStringLiteral("管理器在"), this);
    box->setObjectName(QString::fromLatin1(kNames.at(frame).frame));
    controls.box = box;
    QLayout* times = buildTimes(frame);
    auto* options = new QVBoxLayout;
    for (int i = 0; i < (isLock ? 2 : 3); ++i) {
        auto* option = numbered(new QRadioButton(AutoGuardSettings::optionCaption(frame, i), box),
                                kNames.at(frame).option, static_cast<std::size_t>(i));
        connect(option, &QRadioButton::clicked, this,
                [this, frame, i] { m_logic.choose(frame, i); });
        options->addWidget(option);
        controls.options.push_back(option);
    }
    auto* layout = new QVBoxLayout(box);
    layout->addLayout(times);
    layout->addLayout(options);
    if (isLock) {
        chkScreenLock = new QCheckBox(QStringLiteral("桌面锁屏或系统睡眠时也锁定(&W)"), box);
        chkScreenLock->setObjectName(QStringLiteral("chkScreenLock"));
        connect(chkScreenLock, &QCheckBox::clicked, this,
                [this](bool isOn) { m_logic.locksWithScreen(isOn); });
        layout->addWidget(chkScreenLock);
        if (!m_logic.hint().isEmpty()) {
            auto* hint = new QLabel(m_logic.hint(), box);
            hint->setObjectName(QStringLiteral("lblHint"));
            hint->setWordWrap(true);
            layout->addWidget(hint);
        }
    }
    controls.cmdOK = new QPushButton(QStringLiteral("确定"), box);
    controls.cmdOK->setObjectName(QStringLiteral("cmdOK%1").arg(static_cast<int>(frame)));
    controls.cmdOK->setAccessibleName(isLock ? QStringLiteral("确定自动锁定设置")
                                             : QStringLiteral("确定自动退出设置"));
    controls.cmdOK->setAutoDefault(true);
    connect(controls.cmdOK, &QPushButton::clicked, this, [this, frame] { m_logic.cmdOK(frame); });
    layout->addWidget(controls.cmdOK, 0, Qt::AlignRight);
    return box;
}

QLayout* dlgAutoGuard::buildTimes(Frame frame) {
    static constexpr std::array kUnitNames{u"小时", u"分", u"秒"};
    FrameControls& controls = m_frames.at(frame);
    auto* times = new QHBoxLayout;
    for (std::size_t i = 0; i < AutoGuardSettings::kUnits; ++i) {
        const auto unit = static_cast<AutoGuardSettings::Unit>(i);
        const QString name = QString::fromUtf16(kUnitNames.at(i));
        auto* time = numbered(new TimeBox(controls.box), kNames.at(frame).spinner, i);
        numbered(time->line(), kNames.at(frame).text, i);
        time->setRange(0, AutoGuardSettings::upperBound(unit));
        time->setAccelerated(true);
        time->setAccessibleName(controls.box->title() + name);
        connect(time->line(), &QLineEdit::textEdited, this,
                [this, frame, unit](const QString& text) { m_logic.type(frame, unit, text); });
        connect(time, &QSpinBox::valueChanged, this,
                [this, frame, unit](int value) { m_logic.spin(frame, unit, value); });
        times->addWidget(time);
        times->addWidget(new QLabel(name, controls.box));
        controls.times.at(i) = time;
    }
    times->addWidget(new QLabel(QStringLiteral("后"), controls.box));
    times->addStretch();
    return times;
}

void dlgAutoGuard::updateState() {
    for (const Frame frame : {AutoGuardSettings::fraAutoLock, AutoGuardSettings::fraAutoExit}) {
        FrameControls& controls = m_frames.at(frame);
        const int option = m_logic.option(frame);
        controls.options.at(static_cast<std::size_t>(option))->setChecked(true);
        for (std::size_t i = 0; i < AutoGuardSettings::kUnits; ++i) {
            const auto unit = static_cast<AutoGuardSettings::Unit>(i);
            QSpinBox* time = controls.times.at(i);
            const QSignalBlocker blocker(time);
            if (static_cast<TimeBox*>(time)->line()->text() != m_logic.text(frame, unit)) {
                time->setValue(m_logic.spinner(frame, unit));
            }
            time->setEnabled(option != 0);
        }
    }
    chkScreenLock->setChecked(m_logic.locksWithScreen());
}

}  // namespace keeper

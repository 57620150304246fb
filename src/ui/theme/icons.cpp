// SPDX-FileCopyrightText: Morvane Keeper contributors
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ui/theme/icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <array>

#include "ui/theme/colors.h"

// Q_INIT_RESOURCE must stand outside any namespace; the library is static, so nobody else does it.
static void initIconResources() {
    Q_INIT_RESOURCE(icons);
}

namespace keeper {
namespace {

constexpr std::array glyphNames = {
    "add",   "application", "arrow-left", "arrow-right", "bookmark", "caps-lock",   "check",
    "close", "copy",        "delete",     "dice",        "edit",     "error",       "exit",
    "eye",   "eye-off",     "file",       "fingerprint", "folder",   "folder-open", "hourglass",
    "info",  "key",         "keyboard",   "language",    "link",     "lock",        "log",
    "paste", "question",    "refresh",    "save",        "search",   "settings",    "shield",
    "undo",  "unlock",      "user",       "warning",     "website",
};
static_assert(glyphNames.size() == static_cast<std::size_t>(Glyph::Website) + 1);

QByteArray readResource(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Draws one SVG resource; "currentColor" in it stands for the tint.
class SvgEngine final : public QIconEngine {
  public:
    SvgEngine(QString path, IconTint tint) : m_path(std::move(path)), m_tint(tint) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        QByteArray svg = readResource(m_path);
        svg.replace("currentColor", color(mode).name().toLatin1());
        QSvgRenderer renderer(svg);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const int side = qMin(rect.width(), rect.height());
        QRect square(0, 0, side, side);
        square.moveCenter(rect.center());
        renderer.render(painter, square);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State state,
                         qreal /*scale*/) override {
        // The size is in device pixels already; QIcon sets the ratio on the result.
        const QString key = QStringLiteral("keeper:%1:%2:%3x%4")
                                .arg(m_path, color(mode).name())
                                .arg(size.width())
                                .arg(size.height());
        QPixmap pixmap;
        if (!QPixmapCache::find(key, &pixmap)) {
            pixmap = QPixmap(size);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            paint(&painter, QRect(QPoint(), size), mode, state);
            painter.end();
            QPixmapCache::insert(key, pixmap);
        }
        return pixmap;
    }

    [[nodiscard]] QIconEngine* clone() const override { return new SvgEngine(*this); }

  private:
    [[nodiscard]] QColor color(QIcon::Mode mode) const {
        const QPalette palette = QApplication::palette();
        if (mode == QIcon::Disabled) {
            return palette.color(QPalette::Disabled, QPalette::WindowText);
        }
        if (mode == QIcon::Selected) {
            return palette.color(QPalette::HighlightedText);
        }
        const bool isDark = isDarkPalette(palette);
        switch (m_tint) {
            case IconTint::Text:
                break;
            case IconTint::Accent:
                return themeColor(ThemeColor::Accent, isDark);
            case IconTint::Good:
                return themeColor(ThemeColor::Good, isDark);
            case IconTint::Warning:
                return themeColor(ThemeColor::Warning, isDark);
            case IconTint::Danger:
                return themeColor(ThemeColor::Danger, isDark);
        }
        return palette.color(QPalette::WindowText);
    }

    QString m_path;
    IconTint m_tint;
};

}  // namespace

QIcon glyphIcon(Glyph glyph, IconTint tint) {
    initIconResources();
    const char* name = glyphNames.at(static_cast<std::size_t>(glyph));
    return QIcon(
        new SvgEngine(QStringLiteral(":/keeper/glyphs/%1.svg").arg(QLatin1StringView(name)), tint));
}

QIcon programIcon() {
    initIconResources();
    return QIcon(new SvgEngine(QStringLiteral(":/keeper/app/morvane-keeper.svg"), IconTint::Text));
}

QIcon lockedProgramIcon() {
    initIconResources();
    return QIcon(
        new SvgEngine(QStringLiteral(":/keeper/app/morvane-keeper-locked.svg"), IconTint::Text));
}

}  // namespace keeper

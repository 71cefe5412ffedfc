#include "ui/theme/Theme.h"

#include "ui/theme/MorvaneStyle.h"

#include <QApplication>

namespace morvane {

Theme::Theme(const ColorScheme &scheme, QObject *parent) : QObject(parent), m_scheme(scheme)
{
    m_desktopPalette = QApplication::palette();
    auto *style = new MorvaneStyle;
    m_origin = m_desktopPalette.color(QPalette::Window) == style->standardPalette().color(QPalette::Window)
                   ? Origin::toolkitDefault
                   : Origin::desktop;
    QApplication::setStyle(style);
    connect(&scheme, &ColorScheme::preferenceChanged, this, &Theme::apply);
    apply();
}

QPalette Theme::chosen(const QPalette &current, Origin origin, ColorScheme::Preference preference)
{
    const bool isDark = current.color(QPalette::Window).lightnessF() < 0.5;
    const bool wantsDark =
        preference == ColorScheme::Preference::none ? isDark : preference == ColorScheme::Preference::dark;
    if (origin == Origin::desktop && isDark == wantsDark)
        return current;
    return wantsDark ? darkPalette() : lightPalette();
}

void Theme::apply()
{
    const QPalette palette = chosen(m_desktopPalette, m_origin, m_scheme.preference());
    if (palette != QApplication::palette())
        QApplication::setPalette(palette);
}

} // namespace morvane

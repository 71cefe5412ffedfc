#pragma once

#include "FixedColorScheme.h"

#include "ui/theme/Theme.h"

#include <QApplication>
#include <QCommandLineParser>

namespace morvane {

/// What the options "font" and "dark" of a gallery ask for, as long as it lives.
class GalleryLook {
public:
    explicit GalleryLook(const QCommandLineParser &parser)
        : m_scheme(parser.isSet(QStringLiteral("dark")) ? ColorScheme::Preference::dark
                                                        : ColorScheme::Preference::light)
    {
        QFont font = QApplication::font();
        font.setPointSizeF(parser.value(QStringLiteral("font")).toDouble());
        QApplication::setFont(font);
    }

private:
    FixedColorScheme m_scheme;
    Theme m_theme{m_scheme};
};

} // namespace morvane

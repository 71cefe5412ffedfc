#pragma once

#include <QCommandLineParser>
#include <QSize>

namespace morvane {

/// The options by which every gallery is told how its window looks, and that for help; `size` is that of a
/// window that is told none.
inline void addGalleryOptions(QCommandLineParser &parser, QSize size)
{
    parser.addHelpOption();
    parser.addOptions({{QStringLiteral("dark"), QStringLiteral("Dark colours.")},
                       {QStringLiteral("width"), QStringLiteral("Width of the window."),
                        QStringLiteral("pixels"), QString::number(size.width())},
                       {QStringLiteral("height"), QStringLiteral("Height of the window."),
                        QStringLiteral("pixels"), QString::number(size.height())},
                       {QStringLiteral("font"), QStringLiteral("Size of the font."), QStringLiteral("points"),
                        QStringLiteral("10")}});
}

/// The size that the options tell.
inline QSize gallerySize(const QCommandLineParser &parser)
{
    return {parser.value(QStringLiteral("width")).toInt(), parser.value(QStringLiteral("height")).toInt()};
}

} // namespace morvane

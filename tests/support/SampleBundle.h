#pragma once

#include "support/SampleArchive.h"

#include <QByteArray>
#include <QList>

namespace morvane {

/// The image of a small bundle, whose program is the text "new".
SampleArchive sampleBundleImage();

/// What somebody might put into an image to do harm.
struct HostileImage {
    QByteArray harm; ///< What is wrong with it.
    SampleArchive archive;
};

/// Images of each kind of harm, none of which may be opened. The files that some want to write outside of
/// their folder are called "morvane-outside".
QList<HostileImage> hostileBundleImages();

} // namespace morvane

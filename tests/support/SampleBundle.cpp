#include "support/SampleBundle.h"

namespace morvane {

namespace {

using Kind = SampleArchive::Kind;

SampleArchive with(Kind kind, const QByteArray &path, const QByteArray &target = {})
{
    return sampleBundleImage().add(kind, path, target);
}

} // namespace

SampleArchive sampleBundleImage()
{
    SampleArchive image;
    image.add(Kind::folder, "Morvane.app/Contents/MacOS");
    image.file("Morvane.app/Contents/MacOS/Morvane", "new", 0755);
    image.file("Morvane.app/Contents/MacOS/library", "new library");
    image.add(Kind::symbolicLink, "Morvane.app/Contents/MacOS/link", "library");
    return image;
}

QList<HostileImage> hostileBundleImages()
{
    return {
        {"a link to a folder of the system", with(Kind::symbolicLink, "Morvane.app/etc", "/etc")},
        {"a file by its whole path", with(Kind::file, "/tmp/morvane-outside")},
        {"a file in the folder above", with(Kind::file, "../morvane-outside")},
        {"a file above the bundle", with(Kind::file, "Morvane.app/../../morvane-outside")},
        {"a link that goes up", with(Kind::symbolicLink, "Morvane.app/up", "../../../morvane-outside")},
        {"a link to what lies beside", with(Kind::symbolicLink, "Morvane.app/beside", "../beside")},
        {"a link that leads out by another",
         with(Kind::symbolicLink, "Morvane.app/Contents/a", "b/../../../x")
             .add(Kind::symbolicLink, "Morvane.app/Contents/b", "MacOS")},
        {"a hard link that goes up", with(Kind::hardLink, "Morvane.app/hard", "../../morvane-outside")},
        {"a hard link to a file of the system", with(Kind::hardLink, "Morvane.app/hard", "/etc/passwd")},
        {"a file behind a link",
         with(Kind::symbolicLink, "Morvane.app/into", "Contents").add(Kind::file, "Morvane.app/into/file")},
        {"a link to nothing", with(Kind::symbolicLink, "Morvane.app/nowhere", "later")},
        {"a pipe", with(Kind::fifo, "Morvane.app/pipe")},
        {"a device", with(Kind::device, "Morvane.app/device")},
        {"a file twice", sampleBundleImage().file("Morvane.app/Contents/MacOS/Morvane", "another", 0755)},
    };
}

} // namespace morvane

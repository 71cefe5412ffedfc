#pragma once

#include "base/FileDescriptor.h"
#include "update/RunningBundle.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <expected>

namespace morvane {

/// Puts a new bundle in the place of the one that runs, in steps that follow each other. Whatever moment it
/// is ended at, the place holds a whole program, the old one or the new; what it leaves beside it is a folder
/// that the next start removes. A step that fails tells the user why, and the old bundle is in its place
/// then, but where only the relaunch failed. One thread at a time; blocks.
class BundleInstallation {
public:
    using Result = std::expected<void, QString>;

    /// The folder that holds the work of an installation, as a regular expression for its name.
    static QString workPattern();

    explicit BundleInstallation(RunningBundle bundle);
    /// Removes its folder, unless the bundle that runs lies there now; the relauncher or the next start does
    /// that.
    ~BundleInstallation();
    BundleInstallation(const BundleInstallation &) = delete;
    BundleInstallation &operator=(const BundleInstallation &) = delete;

    /// All up to the relaunch: prepare(), stage(), swap().
    Result replace(const QString &image);

    /// Makes the folder for the work beside the bundle, so that all moves stay on one volume.
    Result prepare();
    /// Unpacks the image there, and brings it to the disk.
    Result stage(const QString &image);
    /// Exchanges the two bundles.
    Result swap();
    /// Starts the program that waits for the end of this one, cleans up and starts the new one.
    Result scheduleRelaunch(const QList<QByteArray> &environment);

    /// Whether the bundle that runs no longer lies in its place.
    bool hasMovedOldApp() const { return !m_oldApp.isEmpty(); }

private:
    Result checkStaged() const;
    Result swapInTwoMoves();
    QString staged() const;

    const RunningBundle m_bundle;
    QString m_work;
    QString m_oldApp;      ///< Where the bundle that runs lies now; empty until it has been moved.
    FileDescriptor m_lock; ///< Tells the folder from what a crash left.
};

} // namespace morvane

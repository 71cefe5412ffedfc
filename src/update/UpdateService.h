#pragma once

#include "async/Task.h"
#include "update/ImageFile.h"
#include "update/ProgramVersion.h"
#include "update/UpdateInfo.h"

#include <QUrl>
#include <functional>
#include <memory>

namespace morvane {

/// What an update needs of the world: the host, the disk, and the place of the program. Main thread; blocks
/// nowhere.
class UpdateService {
public:
    virtual ~UpdateService() = default;

    /// What runs.
    virtual const ProgramVersion &current() const = 0;

    /// The newest manifest. Throws an error for the user, TransportError or Cancelled.
    virtual Task<UpdateInfo> fetchLatest() = 0;

    /// Brings the image, telling from 0 to 1 how much of it is there; 0 while that is not known. Throws
    /// UpdateInstallError or Cancelled. The image goes away with what is given.
    virtual Task<std::shared_ptr<ImageFile>> downloadUpdateDMG(QUrl url,
                                                               std::function<void(double)> onProgress) = 0;

    /// Whether the image is the one that the manifest names, and signed where this build wants that.
    virtual bool isGenuine(const UpdateImage &image, const UpdateInfo &update) const = 0;

    /// Puts the image's bundle in the place of the one that runs, and sees to it that it is started when this
    /// process has ended. Throws UpdateInstallError.
    virtual Task<void> stageAndScheduleRelaunch(QString image) = 0;

    /// Ends the program in its usual way.
    virtual void terminate() = 0;
};

} // namespace morvane

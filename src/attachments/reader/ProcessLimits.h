#pragma once

namespace morvane {

/// Gives up what this process does not need for reading one file: memory and processor time beyond
/// AttachmentLimits.h, files to write, core dumps. The file may take the process over.
void limitThisProcess();

} // namespace morvane

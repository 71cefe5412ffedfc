#pragma once

namespace morvane {

/// Gives up what this process does not need for reading one file: memory and processor time beyond
/// AttachmentLimits.h, files to write, the network, other processes, core dumps. The file may take the
/// process over. What the system cannot limit stays as it is.
void limitThisProcess();

} // namespace morvane

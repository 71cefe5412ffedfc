#pragma once

namespace morvane {

class SettingsStore;

// What can be said of the selected provider and model without asking them.

/// Whether the selected provider can be asked: it needs no key, or has one.
bool hasAPIKey(const SettingsStore &settings);

/// Whether the selected model accepts images.
bool modelSeesImages(const SettingsStore &settings);

} // namespace morvane

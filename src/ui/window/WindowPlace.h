#pragma once

class QSplitter;
class QWidget;

namespace morvane {

class SettingsStore;

/// Where the main window stands, how large it is and how it is divided, from one start to the next.
class WindowPlace {
public:
    /// `settings` must outlive this.
    explicit WindowPlace(SettingsStore &settings) : m_settings(settings) {}

    /// Gives the window its place, or at the first start its standard size, as far as the screen has room for
    /// it.
    void restore(QWidget &window, QSplitter &split) const;
    /// Keeps the place; writes only what is another.
    void remember(const QWidget &window, const QSplitter &split);

private:
    SettingsStore &m_settings;
};

} // namespace morvane

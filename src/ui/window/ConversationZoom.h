#pragma once

#include <QObject>

namespace morvane {

class Announcer;
class ChatScrollView;
class SettingsStore;

/// How large the conversation's text is, in steps; remembered from one start to the next. Main thread.
class ConversationZoom : public QObject {
    Q_OBJECT
public:
    /// All must outlive this.
    ConversationZoom(ChatScrollView &view, SettingsStore &settings, Announcer &announcer,
                     QObject *parent = nullptr);

    bool canZoomIn() const;
    bool canZoomOut() const;
    bool isActualSize() const;

public Q_SLOTS:
    void zoomIn();
    void zoomOut();
    void actualSize();

Q_SIGNALS:
    void changed();

private:
    void set(int percent);

    ChatScrollView &m_view;
    SettingsStore &m_settings;
    Announcer &m_announcer;
};

} // namespace morvane

#pragma once

#include <QString>
#include <functional>

namespace morvane {

class Announcer;
class AttachmentService;
class BrowsingRecords;
class ConversationPort;
class FieldPasting;
class Scheduler;
class UpdateModel;
class UrlOpener;
class WindowRaiser;

/// What the browser's window works with beside its manager; all of it outlives the window.
struct BrowserWindowServices {
    Scheduler &scheduler;
    Announcer &announcer;
    BrowsingRecords &records;
    ConversationPort &conversation;
    const UpdateModel &updates;
    AttachmentService &attachments;
    UrlOpener &urls;
    WindowRaiser &raiser;
    FieldPasting *pasting = nullptr; ///< Without it the toolkit waits for what is pasted.
    std::function<void()> showMainWindow;
    QString documentation; ///< The page that explains the program, by its path.
};

} // namespace morvane

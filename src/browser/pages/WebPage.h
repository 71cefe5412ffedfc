#pragma once

#include "browser/pages/EditCommand.h"
#include "browser/pages/PageDownload.h"
#include "browser/pages/PageFailure.h"
#include "browser/pages/PagePermission.h"

#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <functional>
#include <memory>

class QWidget;

namespace morvane {

/// One page of a web engine, with its list of pages to go back to. Main thread.
///
/// A load that replaces the document says `navigationStarted`, then `committed` once the new document has
/// taken the old one's place, and ends in `finished` or `failed`. Where a load begins while another one is
/// under way, the first one may end without a word. What changes within a document is `changed` only.
class WebPage : public QObject {
    Q_OBJECT
public:
    /// Called at most once, on the main thread, with an invalid value when the script failed or has no value,
    /// or the page has crashed. Never called by a page that does not answer, nor after the page is gone.
    using ScriptAnswer = std::function<void(const QVariant &value)>;

    /// Loads an http or https address; `isLoading` at once.
    virtual void load(const QUrl &address) = 0;
    /// Shows a document of ours, without an address of its own.
    virtual void loadHtml(const QString &html) = 0;
    virtual void goBack() = 0;
    virtual void goForward() = 0;
    virtual void reload() = 0;
    virtual void stop() = 0;
    /// Whoever goes to another document next knows that this one is left: the user is not asked about what it
    /// would lose, and what it asks by then is refused. `load` means so by itself.
    virtual void leaveUnasked() = 0;
    virtual void setZoom(double factor) = 0;
    /// Does nothing where there is nothing to do it to.
    virtual void edit(EditCommand command) = 0;

    /// Empty for a document that has none; bounded.
    virtual QString title() const = 0;
    /// Empty for a document of ours. A load that fails leaves it as it was.
    virtual QUrl address() const = 0;
    virtual bool isLoading() const = 0;
    virtual bool canGoBack() const = 0;
    virtual bool canGoForward() const = 0;

    /// Runs a script in the main frame, in a world that the page cannot reach: it shares the page's elements
    /// and none of its scripts. The value is a text, number or boolean.
    virtual void evaluate(const QString &script, ScriptAnswer answer) = 0;
    /// A script has had more than enough time. Should the page have answered nothing until it is left, it is
    /// taken for hung and its process ended, since it would hold the next page too.
    virtual void scriptUnanswered() = 0;

    /// What shows the page; belongs to the page. A window that shows it takes it out of its layout
    /// (`setParent(nullptr)`) before it goes.
    virtual QWidget *view() = 0;

Q_SIGNALS:
    void navigationStarted(const QUrl &address);
    void committed();
    /// Title, address or list of pages, within the document; some times a second at most.
    void changed();
    /// The document is there, whatever the server's status was.
    void finished();
    void failed(const morvane::PageFailure &failure);
    /// A link or a script wants another window for this address; it may be empty.
    void newWindowRequested(const QUrl &address);
    /// The document has asked for too many windows, and gets no more by itself.
    void windowsRefused();
    void downloadRequested(const std::shared_ptr<morvane::PageDownload> &download);
    /// A dialog of the page waits for the user, whose keyboard is in another window: who asks what, in a
    /// line.
    void askedElsewhere(const QString &words);
    void permissionRequested(const std::shared_ptr<morvane::PagePermission> &permission);
};

} // namespace morvane

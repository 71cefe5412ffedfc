#pragma once

#include "platform/PasteSource.h"
#include "ui/controls/PastePlace.h"

#include <QClipboard>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <memory>
#include <optional>
#include <variant>

class QKeyEvent;
class QLineEdit;
class QMimeData;

namespace morvane {

class Announcer;
class Scheduler;

/// Pasting what another program has copied, without waiting for that program: it is asked, and what it
/// answers goes to where it was to go. Lines of text need to do nothing for that while the object lives;
/// other fields call `begin`. One for the whole program; main thread.
class FieldPasting : public QObject {
    Q_OBJECT
public:
    enum class End {
        inserted,
        nothing, ///< Nothing has been copied that could be pasted.
        failed,  ///< The user was told.
        dropped  ///< The field did not want it any more.
    };

    /// All of them outlive the object, and `scheduler` is shut down before it goes.
    FieldPasting(Scheduler &scheduler, PasteSource &source, Announcer &announcer);

    /// Which clipboard `data` is, if it is one that belongs to another program, so that a question about it
    /// would wait for that program.
    std::optional<QClipboard::Mode> foreign(const QMimeData *data) const;

    /// Asks, and pastes the answer at `place`. One is asked at a time: another field's wish takes the place
    /// of this one. Of the same field a further wish changes nothing, unless something else has been copied
    /// since.
    void begin(std::shared_ptr<PastePlace> place, QClipboard::Mode mode);
    /// Pastes pieces of a text that this program has itself, as one, at `place`.
    void begin(std::shared_ptr<PastePlace> place, const QStringList &pieces);
    /// Pastes the clipboard at a position of a line; its caret stays where it is.
    void paste(QLineEdit &line, int at);
    /// Whether an answer for `field` is awaited.
    bool isAwaited(const QWidget &field) const;
    /// Nothing is pasted into `field` any more.
    void drop(const QWidget &field);

    /// Speaks what became of a text that was pasted.
    void announce(const QString &text);

Q_SIGNALS:
    /// What was awaited for `field` has come to an end.
    void ended(QWidget *field, FieldPasting::End end);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Idle {};
    struct Asking {
        std::shared_ptr<PastePlace> place;
        std::optional<QClipboard::Mode> mode; ///< None where no other program is asked.
        bool isOutdated = false;              ///< Something else has been copied since.
    };
    using Answer = std::expected<PasteContent, PasteFailure>;

    bool isForeign(QClipboard::Mode mode) const;
    void await(Asking wish);
    static Task<void> join(QPointer<FieldPasting> self, std::shared_ptr<PastePlace> place,
                           QStringList pieces);
    static Task<void> ask(QPointer<FieldPasting> self, std::shared_ptr<PastePlace> place,
                          QClipboard::Mode mode);
    const Asking *asking() const { return std::get_if<Asking>(&m_phase); }
    bool isFor(const std::shared_ptr<PastePlace> &place) const;
    void take(const std::shared_ptr<PastePlace> &place, const Answer &answer);
    void fail(QWidget &field, PasteFailure failure);
    bool takeKey(QObject &watched, QKeyEvent &key);
    bool pasteInto(QLineEdit &line, QClipboard::Mode mode);

    Scheduler &m_scheduler;
    PasteSource &m_source;
    Announcer &m_announcer;
    std::variant<Idle, Asking> m_phase;
};

} // namespace morvane

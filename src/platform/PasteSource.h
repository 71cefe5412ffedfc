#pragma once

#include "async/Task.h"

#include <QByteArray>
#include <QString>
#include <expected>

namespace morvane {

/// What a field can take of what another program has copied.
struct PasteContent {
    QString text;          ///< With line feeds as line ends; empty if there is none.
    QByteArray uriList;    ///< Files and addresses, in the form of text/uri-list.
    QByteArray picture;    ///< Where there is no text.
    QString pictureFormat; ///< Such as "png".

    bool isEmpty() const { return text.isEmpty() && uriList.isEmpty() && picture.isEmpty(); }
};

enum class PasteFailure {
    silent,   ///< The program that has copied it does not answer.
    tooSlow,  ///< It began to, and has more than it sends in any reasonable time.
    tooLarge, ///< More than is read.
};

/// What other programs have copied or selected, as a field asks for it.
class PasteSource {
public:
    enum class Selection {
        clipboard,
        primary, ///< What the middle mouse button pastes.
    };

    virtual ~PasteSource() = default;

    /// Whether this desktop can be asked so. Main thread.
    virtual bool isReachable() const = 0;
    /// Asks whoever has it. An empty content is an answer too. Main thread; blocks nothing, however long
    /// the other program takes.
    virtual Task<std::expected<PasteContent, PasteFailure>> read(Selection selection) = 0;
};

} // namespace morvane

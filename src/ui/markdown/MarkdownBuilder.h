#pragma once

#include "ui/markdown/MarkdownBlock.h"

#include <md4c.h>

#include <QList>
#include <QString>

namespace morvane {

/// Collects what the parser library reports into a flat list of blocks.
class MarkdownBuilder {
public:
    void enterBlock(MD_BLOCKTYPE type, const void *detail);
    void leaveBlock(MD_BLOCKTYPE type);
    void enterSpan(MD_SPANTYPE type, const void *detail);
    void leaveSpan(MD_SPANTYPE type);
    void addText(MD_TEXTTYPE type, const QString &text);

    QList<MarkdownBlock> takeBlocks();

private:
    struct List {
        bool isOrdered = false;
        unsigned next = 1;
        bool isTight = false;
    };

    struct Link {
        QString address;
        QString text; ///< That stands for it.
    };

    void leaveLink();
    void append(MarkdownRun run);
    void beginBlock(MarkdownBlock::Kind kind);
    void endBlock();
    void enterItem(const MD_BLOCK_LI_DETAIL &detail);
    void addRun(const QString &text);
    MarkdownRun::Style style() const;

    QList<MarkdownBlock> m_blocks;
    QList<List> m_lists;
    QList<Link> m_links;
    QString m_pendingMarker;
    int m_quotes = 0;
    int m_bold = 0;
    int m_italic = 0;
    int m_code = 0;
    int m_strikethrough = 0;
    bool m_isOpen = false; ///< Whether the last block still takes runs.
    bool m_inTable = false;
};

} // namespace morvane

#include "store/ConversationScanner.h"

#include "base/Json.h"
#include "store/ConversationEvents.h"

#include <boost/json/basic_parser_impl.hpp>

namespace morvane {

class ConversationScanner::Parser {
public:
    void buildWith(ConversationBuilder &builder) { m_parser.handler().buildWith(builder); }

    bool feed(QByteArrayView piece)
    {
        if (m_isFirst && piece.startsWith(utf8ByteOrderMark))
            piece = piece.sliced(utf8ByteOrderMark.size());
        m_isFirst = false;
        return write(piece, More::yes);
    }

    std::optional<ConversationSummary> finish()
    {
        if (!write({}, More::no) || !m_parser.handler().isConversation())
            return std::nullopt;
        return m_parser.handler().summary();
    }

private:
    enum class More { no, yes };

    bool write(QByteArrayView piece, More more)
    {
        const auto size = static_cast<std::size_t>(piece.size());
        boost::json::error_code error;
        const std::size_t read = m_parser.write_some(more == More::yes, piece.data(), size, error);
        m_failed = m_failed || error || read < size;
        return !m_failed;
    }

    boost::json::basic_parser<ConversationEvents> m_parser{jsonParseOptions()};
    bool m_isFirst = true;
    bool m_failed = false;
};

ConversationScanner::ConversationScanner() : m_parser(std::make_unique<Parser>()) {}

ConversationScanner::ConversationScanner(ConversationBuilder &builder) : ConversationScanner()
{
    m_parser->buildWith(builder);
}

ConversationScanner::~ConversationScanner() = default;

bool ConversationScanner::feed(QByteArrayView piece)
{
    return m_parser->feed(piece);
}

std::optional<ConversationSummary> ConversationScanner::finish()
{
    return m_parser->finish();
}

} // namespace morvane

#pragma once

#include "store/ConversationBuilder.h"
#include "store/ConversationSummary.h"

#include <array>
#include <boost/json/array.hpp>
#include <boost/json/error.hpp>
#include <boost/json/object.hpp>
#include <boost/json/string.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace morvane {

/// Follows a JSON parser's events through a conversation file and checks every key: of two equal keys the
/// last one counts, unknown keys are passed over. A handler for boost::json::basic_parser.
class ConversationEvents {
public:
    static constexpr std::size_t max_object_size = boost::json::object::max_size();
    static constexpr std::size_t max_array_size = boost::json::array::max_size();
    static constexpr std::size_t max_key_size = boost::json::string::max_size();
    static constexpr std::size_t max_string_size = boost::json::string::max_size();

    using Error = boost::json::error_code;

    /// Tells the messages to `builder` as well, which must outlive it.
    void buildWith(ConversationBuilder &builder) { m_builder = &builder; }

    /// Whether the document, once it has ended, was a conversation.
    bool isConversation() const { return m_isConversation; }
    const ConversationSummary &summary() const { return m_summary; }

    bool on_document_begin(Error &) { return true; }
    bool on_document_end(Error &) { return true; }
    bool on_object_begin(Error &);
    bool on_object_end(std::size_t, Error &);
    bool on_array_begin(Error &);
    bool on_array_end(std::size_t, Error &);
    bool on_key_part(std::string_view part, std::size_t, Error &);
    bool on_key(std::string_view part, std::size_t, Error &);
    bool on_string_part(std::string_view part, std::size_t, Error &);
    bool on_string(std::string_view part, std::size_t, Error &);
    bool on_number_part(std::string_view part, Error &);
    bool on_int64(std::int64_t number, std::string_view, Error &);
    bool on_uint64(std::uint64_t number, std::string_view, Error &);
    bool on_double(double approximation, std::string_view part, Error &error);
    bool on_bool(bool, Error &);
    bool on_null(Error &);
    bool on_comment_part(std::string_view, Error &) { return true; }
    bool on_comment(std::string_view, Error &) { return true; }

private:
    enum class Type {
        unknown,
        uuid,
        title,
        text,
        role,
        kind,
        base64,
        created,
        updated,
        date,
        size,
        flag,
        list
    };
    enum class Presence { required, optional };
    using Member = ConversationBuilder::Member;
    struct Field {
        std::string_view key;
        Type type = Type::unknown;
        Presence presence = Presence::required;
        Member member = Member::none;
    };
    /// The keys of one kind of object.
    using Record = std::array<Field, 7>;

    /// An open object that matters.
    struct Frame {
        const Record *record = nullptr;
        const Field *field = nullptr; ///< Whose value comes next; null for an unknown key.
        unsigned wrong = 0;           ///< One bit for each field that is missing or has a wrong value.
        bool inList = false;          ///< Between the brackets of the list that is the field's value.
        bool listIsRight = true;
    };

    static const Record conversation, message, attachment;

    void open(const Record &record);
    void settle(bool isRight);
    void takeScalar(bool isRight);
    void takeNumber(double number, std::optional<qint64> integer);
    Member member() const;
    void takeText(std::string_view part);
    void takeBase64(std::string_view part);
    bool textIsRight();
    bool isField() const { return m_passedOver == 0 && m_depth > 0 && !m_frames[m_depth - 1].inList; }
    Type expected() const;
    Frame &frame() { return m_frames[m_depth - 1]; }

    std::array<Frame, 3> m_frames; ///< Conversation, message, attachment.
    std::size_t m_depth = 0;       ///< How many of them are open.
    std::size_t m_passedOver = 0;  ///< How many open containers around the next value do not matter.
    std::string m_key;             ///< The key, as far as it matters.
    std::string m_text;            ///< The text, as far as it matters.
    std::string m_number;          ///< The first part of a number that came in pieces.
    std::size_t m_base64Length = 0;
    std::size_t m_base64Padding = 0;
    bool m_base64IsRight = true;
    bool m_isConversation = false;
    ConversationBuilder *m_builder = nullptr;
    ConversationSummary m_summary;
};

} // namespace morvane

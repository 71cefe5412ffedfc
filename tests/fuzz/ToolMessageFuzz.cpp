// A message of a tool server, as a line or as an event, through all that reads it.

#include "mcp/ExposedTools.h"
#include "mcp/JsonRpc.h"
#include "mcp/ToolAnswers.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace morvane;
    using namespace Qt::StringLiterals;
    auto message = parseJSONText(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!message)
        return 0;
    if (answeredID(*message) && usableID(*message) != answeredID(*message))
        std::abort();
    const auto result = resultOf(std::move(message));
    if (!result)
        return 0;
    if (const auto tools = listedTools(*result)) {
        for (const ExposedTool &tool : exposedTools(u"Fuzz"_s, *tools))
            if (!tool.declared.name.startsWith("mcp_fuzz_"_L1) ||
                tool.declared.name != tool.declared.name.toLower())
                std::abort();
    }
    const ToolResult called = toolResult(*result);
    if (called.text.isEmpty())
        std::abort();
    return 0;
}

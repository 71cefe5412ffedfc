// A tool server on standard input and output that does what its callers ask for, hostile things above all.
//
//   scripted-tool-server [--silent] [--early] [--stubborn] [--family] [--noise] [--crlf] [--pids FILE]
//                        [--tools NUMBER]
//
//   --silent    answers nothing at all
//   --early     prints garbage, and answers to what it was not asked yet, before it reads
//   --stubborn  ends neither with its input nor by SIGTERM
//   --family    has a child, and a grandchild that left its session and lost its parent; both are stubborn
//   --noise     writes to standard error without end
//   --crlf      ends its lines with CR LF
//   --pids      appends the process number of itself and of each of its family to FILE
//   --tools     lists that many further tools, each with a schema of 10 kB
//
// What its tools do is told at handleCall().

#include <boost/json.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <optional>
#include <sched.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace json = boost::json;

namespace {

struct Options {
    bool silent = false;
    bool early = false;
    bool stubborn = false;
    bool family = false;
    bool noise = false;
    bool crlf = false;
    std::string pids;
    int tools = 0;
};

void writeAll(const std::string &bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::write(STDOUT_FILENO, bytes.data() + sent, bytes.size() - sent);
        if (count <= 0)
            std::_Exit(3);
        sent += static_cast<std::size_t>(count);
    }
}

/// Waits until all that was written has been read, so that the next bytes are a chunk by themselves.
void waitUntilRead()
{
    int unread = 0;
    while (::ioctl(STDOUT_FILENO, FIONREAD, &unread) == 0 && unread > 0)
        ::sched_yield();
}

void notePid(const std::string &path)
{
    if (path.empty())
        return;
    const std::string line = std::to_string(::getpid()) + '\n';
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    [[maybe_unused]] const ssize_t written = ::write(file, line.data(), line.size());
    ::close(file);
}

void ignoreEnd()
{
    for (const int signal : {SIGTERM, SIGHUP, SIGINT, SIGPIPE})
        std::signal(signal, SIG_IGN);
}

[[noreturn]] void waitForever()
{
    while (true)
        ::pause();
}

void raiseFamily(const std::string &pids)
{
    if (::fork() == 0) {
        ignoreEnd();
        if (::fork() == 0) {
            if (::fork() == 0) {
                ::setsid();
                notePid(pids);
                waitForever();
            }
            std::_Exit(0); // the one above is an orphan now
        }
        ::wait(nullptr);
        notePid(pids);
        waitForever();
    }
}

class Server {
public:
    explicit Server(Options options) : m_options(std::move(options)) {}

    void serve()
    {
        std::string line;
        while (std::getline(std::cin, line)) {
            boost::system::error_code error;
            const json::value message = json::parse(line, error);
            if (!error && message.is_object() && !m_options.silent)
                handle(message.get_object());
        }
    }

private:
    void send(const json::object &message)
    {
        writeAll(json::serialize(message) + (m_options.crlf ? "\r\n" : "\n"));
    }

    void answer(const json::value &id, json::object result)
    {
        send({{"jsonrpc", "2.0"}, {"id", id}, {"result", std::move(result)}});
    }

    void say(const json::value &id, const std::string &text)
    {
        const json::object item{{"type", "text"}, {"text", text}};
        answer(id, {{"content", json::array{item}}});
    }

    void handle(const json::object &message)
    {
        const json::value *const id = message.if_contains("id");
        const json::value *const method = message.if_contains("method");
        if (!id || !method)
            return;
        if (*method == "initialize") {
            answer(*id, {{"protocolVersion", "2025-03-26"},
                         {"capabilities", {{"tools", json::object()}}},
                         {"serverInfo", {{"name", "scripted"}, {"version", "1"}}}});
        } else if (*method == "tools/list")
            answer(*id, {{"tools", tools()}});
        else if (*method == "tools/call")
            handleCall(*id, message.at("params").at("name").as_string().c_str(),
                       message.at("params").at("arguments").as_object());
    }

    json::array tools() const
    {
        json::array list;
        for (const char *name :
             {"echo", "big", "twice", "never", "later", "stranger", "garbage", "nested", "die", "exit",
              "deaf", "asks", "text-id", "fail", "slow", "pid", "pipes", "variable"}) {
            list.push_back(json::object{
                {"name", name},
                {"description", std::string("does ") + name},
                {"inputSchema", {{"type", "object"}, {"properties", {{"text", {{"type", "string"}}}}}}}});
        }
        json::object properties;
        if (m_options.tools > 0)
            for (int i = 0; i < 100; ++i)
                properties["property-" + std::to_string(i)] =
                    json::object{{"type", "string"}, {"description", std::string(45, 'x')}};
        for (int i = 0; i < m_options.tools; ++i)
            list.push_back(json::object{{"name", "more-" + std::to_string(i)},
                                        {"inputSchema", {{"type", "object"}, {"properties", properties}}}});
        return list;
    }

    void handleCall(const json::value &id, const std::string &name, const json::object &arguments)
    {
        const auto text = [&arguments](const char *key) {
            const json::value *const value = arguments.if_contains(key);
            return value && value->is_string() ? std::string(value->get_string()) : std::string();
        };
        const auto number = [&arguments](const char *key) {
            const json::value *const value = arguments.if_contains(key);
            return value && value->is_int64() ? static_cast<std::size_t>(value->get_int64()) : 0;
        };
        if (name == "echo") { // the text that it is given
            say(id, text("text"));
        } else if (name == "pid") { // its process number
            say(id, std::to_string(::getpid()));
        } else if (name == "pipes") { // how many bytes its standard input and output hold
            say(id, std::to_string(::fcntl(STDIN_FILENO, F_GETPIPE_SZ)) + ' ' +
                        std::to_string(::fcntl(STDOUT_FILENO, F_GETPIPE_SZ)));
        } else if (name == "variable") { // what its environment holds under the name in the text
            const char *const value = std::getenv(text("text").c_str());
            say(id, value ? value : "");
        } else if (name == "big") { // the text again and again
            std::string many;
            for (std::size_t i = 0; i < number("times"); ++i)
                many += text("text");
            say(id, many);
        } else if (name == "twice") { // two answers
            say(id, "first");
            say(id, "second");
        } else if (name == "never") { // none
            return;
        } else if (name == "later") { // the answers of two calls in the other order
            if (!m_held) {
                m_held = id;
                return;
            }
            say(id, "second");
            say(*std::exchange(m_held, std::nullopt), "first");
        } else if (name == "stranger") { // answers with ids that nobody waits for first
            say(json::value(4711), "not yours");
            say(json::value(), "nor this");
            say(json::value("0x1"), "nor that");
            say(id, "yours");
        } else if (name == "garbage") { // what is no message first
            writeAll("Listening on stdio!\n\n[1,2]\n\"x\"\n{\"id\":\n\0\n");
            waitUntilRead();
            writeAll(std::string("\xFF\xFE\x80\n", 4));
            waitUntilRead();
            say(id, "after garbage");
        } else if (name == "nested") { // 10 MB of arrays first
            writeAll("{\"id\":" + json::serialize(id) + ",\"result\":" + std::string(5'000'000, '[') +
                     std::string(5'000'000, ']') + "}\n");
            say(id, "survived");
        } else if (name == "die") { // its end in the middle of a line
            writeAll("{\"jsonrpc\":\"2.0\",\"id\":" + json::serialize(id) + ",\"result\":{\"content\":[");
            std::_Exit(1);
        } else if (name == "exit") { // an answer, and its end at once
            say(id, "goodbye");
            std::_Exit(0);
        } else if (name == "deaf") { // an answer, and no more reading
            say(id, "deaf now");
            ::close(STDIN_FILENO);
            waitForever();
        } else if (name == "asks") { // requests of its own under the call's id first
            send({{"jsonrpc", "2.0"}, {"id", id}, {"method", "roots/list"}});
            send({{"jsonrpc", "2.0"}, {"method", "notifications/progress"}, {"params", json::object()}});
            say(id, "asked");
        } else if (name == "text-id") { // the id as text
            say(json::value(json::serialize(id)), "by text");
        } else if (name == "fail") { // a failure of the tool
            const json::object item{{"type", "text"}, {"text", text("text")}};
            answer(id, {{"isError", true}, {"content", json::array{item}}});
        } else if (name == "slow") { // one byte after the other
            const json::object item{{"type", "text"}, {"text", "patience"}};
            const std::string line = json::serialize(
                json::object{{"jsonrpc", "2.0"}, {"id", id}, {"result", {{"content", json::array{item}}}}});
            for (const char byte : line + '\n') {
                writeAll(std::string(1, byte));
                waitUntilRead();
            }
        } else {
            send({{"jsonrpc", "2.0"},
                  {"id", id},
                  {"error", {{"code", -32602}, {"message", "Unknown tool: " + name}}}});
        }
    }

    Options m_options;
    std::optional<json::value> m_held;
};

Options parsed(int count, char **arguments)
{
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--silent")
            options.silent = true;
        else if (argument == "--early")
            options.early = true;
        else if (argument == "--stubborn")
            options.stubborn = true;
        else if (argument == "--family")
            options.family = true;
        else if (argument == "--noise")
            options.noise = true;
        else if (argument == "--crlf")
            options.crlf = true;
        else if (argument == "--pids" && i + 1 < count)
            options.pids = arguments[++i];
        else if (argument == "--tools" && i + 1 < count)
            options.tools = std::atoi(arguments[++i]);
        else
            std::exit(2);
    }
    return options;
}

} // namespace

int main(int count, char **arguments)
{
    const Options options = parsed(count, arguments);
    if (options.stubborn)
        ignoreEnd();
    notePid(options.pids);
    if (options.family)
        raiseFamily(options.pids);
    if (options.noise)
        std::thread([] {
            const std::string noise(64 * 1024, 'n');
            while (::write(STDERR_FILENO, noise.data(), noise.size()) > 0)
                continue;
        }).detach();
    if (options.early) {
        writeAll("Welcome!\n{\"jsonrpc\":\"2.0\",\"id\":2,\"result\":{\"tools\":\"early\"}}\n");
        writeAll("{\"jsonrpc\":\"2.0\",\"method\":\"notifications/message\"}\n{\"half\":");
        writeAll("1}\n");
    }
    Server(options).serve();
    if (options.stubborn)
        waitForever();
    std::_Exit(0);
}

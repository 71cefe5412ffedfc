// Plays the runtime of local models: `serve`, `pull MODEL`, `list` and `rm MODEL`, with the frames and the
// interface of the real one, and misbehaves as it is told. What it knows lies in the folder SCRIPTED_RUNTIME:
//
//   models        the installed models, one in a line; grows and shrinks
//   calls         what it was asked, one call in a line, with OLLAMA_HOST behind it
//   server        written by `serve`: process, parent, session, context length, open descriptors, one in a
//   line pull-output   the bytes that `pull` prints instead of frames of its own pull-hangs    if there,
//   `pull` never ends by itself fails         if there, everything but `serve` prints its content and ends
//   with 1 silent        if there, `serve` ends at once

#include <arpa/inet.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <netinet/in.h>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

fs::path folder()
{
    const char *path = std::getenv("SCRIPTED_RUNTIME");
    return path ? path : ".";
}

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

std::string content(const char *name)
{
    std::ifstream file(folder() / name, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> models()
{
    std::istringstream text(content("models"));
    std::vector<std::string> names;
    for (std::string name; std::getline(text, name);)
        names.push_back(name);
    return names;
}

void save(const std::vector<std::string> &names)
{
    std::ofstream file(folder() / "models", std::ios::binary | std::ios::trunc);
    for (const std::string &name : names)
        file << name << '\n';
}

std::string withTag(const std::string &name)
{
    return name.find(':') == std::string::npos ? name + ":latest" : name;
}

/// Standard error in pieces of the size of the real program's buffer.
void print(std::string_view bytes)
{
    constexpr std::size_t buffer = 4096;
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, buffer);
        const ssize_t written = ::write(STDERR_FILENO, piece.data(), piece.size());
        if (written <= 0)
            std::_Exit(1);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

std::string frame(const std::vector<std::string> &lines, std::size_t linesBefore)
{
    std::string bytes = "\x1b[?2026h\x1b[?25l";
    for (std::size_t line = 1; line < linesBefore; ++line)
        bytes += "\x1b[A";
    bytes += "\x1b[1G";
    for (std::size_t line = 0; line < lines.size(); ++line)
        bytes += lines[line] + "\x1b[K" + (line + 1 < lines.size() ? "\n" : "");
    return bytes + "\x1b[?25h\x1b[?2026l";
}

std::string framesOfAPull()
{
    std::string bytes = frame({"pulling manifest ⠋"}, 0);
    std::size_t before = 1;
    for (int percent = 0; percent <= 100; ++percent) {
        char layer[120];
        std::snprintf(layer, sizeof layer, "pulling 6a0746a1ec1a: %3d%% ▕████      ▏ %.1f GB/4.7 GB", percent,
                      4.7 * percent / 100);
        bytes += frame({"pulling manifest", layer}, before);
        before = 2;
    }
    return bytes +
           frame({"pulling manifest", "pulling 6a0746a1ec1a: 100% ▕██████████▏ 4.7 GB", "success"}, 2) + '\n';
}

int pull(const std::string &model)
{
    const std::string told = content("pull-output");
    print(told.empty() ? framesOfAPull() : told);
    while (fs::exists(folder() / "pull-hangs"))
        ::pause();
    std::vector<std::string> names = models();
    std::erase(names, withTag(model));
    names.insert(names.begin(), withTag(model));
    save(names);
    return 0;
}

int list()
{
    std::cout << "NAME                ID              SIZE      MODIFIED\n";
    for (const std::string &name : models())
        std::cout << name << "    845dbda0ea48    4.7 GB    2 days ago\n";
    return 0;
}

int remove(const std::string &model)
{
    std::vector<std::string> names = models();
    if (std::erase(names, withTag(model)) == 0) {
        std::cerr << "Error: model '" << model << "' not found\n";
        return 1;
    }
    save(names);
    std::cout << "deleted '" << model << "'\n";
    return 0;
}

void tellServer()
{
    std::ofstream file(folder() / "server.new");
    file << ::getpid() << '\n' << ::getppid() << '\n' << ::getsid(0) << '\n';
    file << environment("OLLAMA_CONTEXT_LENGTH") << '\n';
    for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const fs::path target = fs::read_symlink(entry.path(), gone);
        // Not the two that this very function has open.
        if (!gone && target.string().find("server.new") == std::string::npos &&
            target.string().find("/proc/") == std::string::npos)
            file << entry.path().filename().string() << ' ' << target.string() << '\n';
    }
    file.close();
    fs::rename(folder() / "server.new", folder() / "server");
}

std::string response(const std::string &status, const std::string &body)
{
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: application/json\r\nConnection: close\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
}

int serve()
{
    if (fs::exists(folder() / "silent"))
        return 1;
    const std::string host = environment("OLLAMA_HOST");
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(host.substr(host.find(':') + 1))));
    if (::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(listener, 16) != 0)
        return 1;
    tellServer();
    for (;;) {
        const int connection = ::accept(listener, nullptr, nullptr);
        if (connection < 0)
            continue;
        char request[4096];
        const ssize_t size = ::read(connection, request, sizeof request);
        const std::string_view text(request, size > 0 ? static_cast<std::size_t>(size) : 0);
        const std::string answer = text.starts_with("GET /api/version")
                                       ? response("200 OK", R"({"version":"0.0.0"})")
                                       : response("404 Not Found", "{}");
        if (::write(connection, answer.data(), answer.size()) < 0)
            std::cerr << "the other side is gone\n";
        ::close(connection);
    }
}

} // namespace

int main(int count, char **arguments)
{
    const std::string command = count > 1 ? arguments[1] : "";
    const std::string model = count > 2 ? arguments[2] : "";
    std::ofstream(folder() / "calls", std::ios::app)
        << command << (model.empty() ? "" : " " + model) << ' ' << environment("OLLAMA_HOST") << '\n';
    if (command == "serve")
        return serve();
    if (fs::exists(folder() / "fails")) {
        print(content("fails"));
        return 1;
    }
    if (command == "pull")
        return pull(model);
    if (command == "list")
        return list();
    if (command == "rm")
        return remove(model);
    return 1;
}

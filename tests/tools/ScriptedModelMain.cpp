// Serves a script of model answers beside the real program, for rehearsals, end-to-end tests and benchmarks.
//
//   scripted-model SCRIPT.json [--requests FILE] [--port NUMBER]
//
// Prints the port and a line feed once it listens, serves until it is ended by a signal, and appends every
// request to FILE as one line of JSON (ScriptedRequest::toJson). The script's form: support/ModelScript.h.

#include "support/ScriptedModel.h"

#include <csignal>
#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace {

int serve(int argumentCount, char **arguments)
{
    std::string scriptPath;
    std::string requestsPath;
    unsigned long port = 0;
    for (int i = 1; i < argumentCount; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--requests" && i + 1 < argumentCount)
            requestsPath = arguments[++i];
        else if (argument == "--port" && i + 1 < argumentCount)
            port = std::stoul(arguments[++i]);
        else if (scriptPath.empty() && !argument.starts_with("--"))
            scriptPath = argument;
        else
            throw std::runtime_error("usage: scripted-model SCRIPT.json [--requests FILE] [--port NUMBER]");
    }
    std::ifstream file(scriptPath, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read the script \"" + scriptPath + "\"");
    std::ostringstream script;
    script << file.rdbuf();
    std::ofstream requests;
    if (!requestsPath.empty()) {
        requests.open(requestsPath, std::ios::binary | std::ios::app);
        if (!requests)
            throw std::runtime_error("cannot write \"" + requestsPath + "\"");
    }
    if (port > 65535)
        throw std::runtime_error("the port must be below 65536");

    // Blocked before the server starts its threads, so that the signal comes to sigwait alone.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    morvane::ScriptedModel model(morvane::ModelScript::fromJson(script.str()),
                                 static_cast<std::uint16_t>(port),
                                 [&requests](const morvane::ScriptedRequest &request) {
                                     if (requests.is_open())
                                         requests << request.toJson() << std::endl;
                                 });
    std::cout << model.port() << std::endl;
    int signal = 0;
    sigwait(&signals, &signal);
    return 0;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    try {
        return serve(argumentCount, arguments);
    } catch (const std::exception &error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
}

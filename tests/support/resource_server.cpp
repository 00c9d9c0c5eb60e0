#include "support/resource_server.h"

#include "support/pipe.h"

#include <cerrno>
#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const std::string kScripts = LING_TEST_SCRIPTS;

}  // namespace

ResourceServer::ResourceServer() {
    Pipe in;
    Pipe out;
    start(in.reader, out.writer);
    Pipe::drop(out.writer);  // What the servers say ends when they do.
    readPorts(out.reader);
    input_ = std::exchange(in.writer, -1);
}

ResourceServer::~ResourceServer() {
    close(input_);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR)
        continue;
}

std::string ResourceServer::certificate() { return kScripts + "/../data/untrusted_server.pem"; }

void ResourceServer::start(int input, int output) {
    std::vector<std::string> texts = {LING_TEST_PYTHON, "-I", "-B", kScripts + "/resource_server.py"};
    std::vector<char*> arguments;
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    char* environment[] = {nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    const int problem = posix_spawn(&process_, LING_TEST_PYTHON, &actions, nullptr, arguments.data(), environment);
    posix_spawn_file_actions_destroy(&actions);
    if (problem != 0)
        throw std::runtime_error("The servers could not be started.");
}

void ResourceServer::readPorts(int output) {
    std::string line;
    for (char next = 0; read(output, &next, 1) == 1 && next != '\n';)
        line.push_back(next);
    if (!(std::istringstream(line) >> httpPort_ >> httpsPort_ >> ftpPort_))
        throw std::runtime_error("The servers did not say where they are.");
}

#pragma once

#include <string>

#include <sys/types.h>

/// The servers of `tests/scripts/resource_server.py`, in a process of their own: they answer whatever this process
/// does, and hold none of its locks. They end with this object.
class ResourceServer {
public:
    ResourceServer();
    ~ResourceServer();
    ResourceServer(const ResourceServer&) = delete;
    ResourceServer& operator=(const ResourceServer&) = delete;

    /// The URI of a path that begins with "/".
    std::string http(const std::string& path) const { return "http://127.0.0.1:" + httpPort_ + path; }
    std::string ftp(const std::string& path, const std::string& user = "") const {
        return "ftp://" + user + "127.0.0.1:" + ftpPort_ + path;
    }
    /// By the name that the certificate is for, unless another one is given.
    std::string https(const std::string& path, const std::string& host = "localhost") const {
        return "https://" + host + ":" + httpsPort_ + path;
    }
    /// The file with the certificate that nobody trusts.
    static std::string certificate();

private:
    void start(int input, int output);
    void readPorts(int output);

    int input_ = -1;  // The server serves until this is closed.
    pid_t process_ = -1;
    std::string httpPort_, httpsPort_, ftpPort_;
};

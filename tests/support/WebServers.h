// Web servers on the loopback interface with certificates of a test's own authority: nginx as a maker would set it up,
// and one that misbehaves.
#pragma once

#include "Process.h"
#include "TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace quillomat::testing {

struct Certificate {
    std::string file;
    std::string key;
};

/// An authority that issues certificates into a folder.
class TestAuthority {
public:
    explicit TestAuthority(std::string folder, const std::string& name = "authority")
        : folder_(std::move(folder)), own_{folder_ + "/" + name + ".pem", folder_ + "/" + name + ".key"} {
        std::ofstream(folder_ + "/openssl.cnf") << "[req]\ndistinguished_name = name\n[name]\n";
        isReady_ = runQuietly(withNewKey({"openssl", "req", "-x509", "-days", "30", "-subj", "/CN=" + name, "-addext",
                                          "basicConstraints=critical,CA:TRUE"},
                                         own_));
    }

    [[nodiscard]] bool isReady() const { return isReady_; }
    [[nodiscard]] const std::string& file() const { return own_.file; }

    /// A certificate for the hosts; one of negative `days` has ended already.
    [[nodiscard]] Certificate issue(const std::string& name, const std::string& hosts, int days = 30) const {
        const Certificate made{folder_ + "/" + name + ".pem", folder_ + "/" + name + ".key"};
        const std::string request = folder_ + "/" + name + ".csr";
        runQuietly(withNewKey({"openssl", "req", "-subj", "/CN=" + name, "-addext", "subjectAltName=" + hosts},
                              {request, made.key}));
        runQuietly({"openssl", "x509", "-req", "-in", request, "-CA", own_.file, "-CAkey", own_.key, "-CAcreateserial",
                    "-copy_extensions", "copy", "-days", std::to_string(days), "-out", made.file});
        return made;
    }

private:
    /// With a configuration of its own, the machine's not being the test's business.
    [[nodiscard]] std::vector<std::string> withNewKey(std::vector<std::string> command, const Certificate& made) const {
        command.insert(command.end(), {"-config", folder_ + "/openssl.cnf"});
        for (const char* word : {"-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout"}) {
            command.emplace_back(word);
        }
        command.insert(command.end(), {made.key, "-out", made.file});
        return command;
    }

    std::string folder_;
    Certificate own_;
    bool isReady_ = false;
};

inline constexpr const char* allTestHosts = "DNS:localhost,DNS:quillomat.localhost,DNS:www.quillomat.localhost";

/// A port that nobody listened on a moment ago.
inline std::uint16_t freePort() {
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(probe, reinterpret_cast<sockaddr*>(&address), length);
    ::getsockname(probe, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(probe);
    return ntohs(address.sin_port);
}

inline bool acceptsConnections(std::uint16_t port) {
    const int probe = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    const bool isOpen = ::connect(probe, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(probe);
    return isOpen;
}

/// nginx under both host names, with the configuration that is handed out to makers, over a folder.
class NginxServer {
public:
    NginxServer(const std::string& root, const Certificate& certificate) : port_(freePort()) {
        const std::string site = makersConfiguration(root, certificate);
        if (site.empty()) {
            return;
        }
        work_.add("nginx.conf",
                  (::geteuid() == 0 ? "user root;\n" : "") +
                      std::string("worker_processes 1;\ndaemon off;\nmaster_process off;\npid nginx.pid;\n"
                                  "error_log error.log warn;\nevents {}\nhttp {\n"
                                  "default_type application/octet-stream;\n"
                                  "types { application/json json; image/png png; text/html html; }\n"
                                  "client_body_temp_path body; proxy_temp_path proxy;\n"
                                  "fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi; scgi_temp_path scgi;\n") +
                      site + "\n}\n");
        process_ = std::make_unique<Process>(std::vector<std::string>{*findProgram("nginx"), "-p", work_.path(), "-e",
                                                                      "error.log", "-c", work_.path("nginx.conf")});
        for (int attempt = 0; attempt < 200 && !isReady_; ++attempt) {
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
            isReady_ = acceptsConnections(port_);
        }
    }

    [[nodiscard]] bool isReady() const { return isReady_; }
    [[nodiscard]] std::string errors() const { return work_.contentOf("error.log"); }
    [[nodiscard]] std::uint16_t port() const { return port_; }
    [[nodiscard]] std::string shortHost() const { return "quillomat.localhost:" + std::to_string(port_); }
    [[nodiscard]] std::string longHost() const { return "www." + shortHost(); }

private:
    /// The five marked lines filled in; empty when one of them is not as it was.
    [[nodiscard]] std::string makersConfiguration(const std::string& root, const Certificate& certificate) const {
        std::ifstream file(std::string(QUILLOMAT_SOURCE_DIR) + "/packaging/nginx/quillomat.conf");
        std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::pair<std::string, std::string> settings[] = {
            {"443 ssl", "127.0.0.1:" + std::to_string(port_) + " ssl"},
            {"quillomat.example www.quillomat.example", "quillomat.localhost www.quillomat.localhost"},
            {"/srv/quillomat;", root + ";"},
            {"/etc/ssl/quillomat/fullchain.pem", certificate.file},
            {"/etc/ssl/quillomat/key.pem", certificate.key}};
        for (const auto& [given, own] : settings) {
            const auto at = text.find(given);
            if (at == std::string::npos) {
                return {};
            }
            text.replace(at, given.size(), own);
        }
        return text;
    }

    TemporaryFolder work_;
    std::uint16_t port_;
    bool isReady_ = false;
    std::unique_ptr<Process> process_;
};

/// The server of tests/platform/network/misbehaving_server.py, whose paths each fail in a way of their own.
class MisbehavingServer {
public:
    explicit MisbehavingServer(const Certificate& certificate)
        : process_({"/usr/bin/python3",
                    std::string(QUILLOMAT_SOURCE_DIR) + "/tests/platform/network/misbehaving_server.py",
                    certificate.file, certificate.key}) {
        const std::string ports = process_.readLine();
        tls_ = numberAfter(ports, "\"tls\": ");
        mute_ = numberAfter(ports, "\"mute\": ");
    }

    [[nodiscard]] bool isReady() const { return tls_ != 0; }
    [[nodiscard]] std::uint16_t port() const { return tls_; }
    /// Takes connections and never says a word.
    [[nodiscard]] std::uint16_t mutePort() const { return mute_; }

private:
    static std::uint16_t numberAfter(const std::string& text, const std::string& label) {
        const auto at = text.find(label);
        return at == std::string::npos ? std::uint16_t{0}
                                       : static_cast<std::uint16_t>(std::atoi(text.c_str() + at + label.size()));
    }

    Process process_;
    std::uint16_t tls_ = 0;
    std::uint16_t mute_ = 0;
};

/// Why no server can be started here; empty when all that is needed is installed.
inline std::string missingForServers(const std::vector<std::string>& programs) {
    for (const std::string& program : programs) {
        if (!findProgram(program)) {
            return program + " is not installed";
        }
    }
    return {};
}

} // namespace quillomat::testing

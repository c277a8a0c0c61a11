// A maker with a site, a server for it, and an authority that installations trust.
#pragma once

#include "Command.h"
#include "WebServers.h"

#include <memory>
#include <string>

namespace quillomat::testing {

/// Serves a folder and goes wrong where it is told to; see faulty_site.py.
class FaultySite {
public:
    FaultySite(const Certificate& certificate, const TemporaryFolder& folder, const std::string& root)
        : folder_(folder), root_(root) {
        plan("{}");
        process_ = std::make_unique<Process>(Words{"/usr/bin/python3",
                                                   std::string(QUILLOMAT_SOURCE_DIR) + "/tests/cli/faulty_site.py",
                                                   certificate.file, certificate.key, folder.path(root)});
        port_ = std::atoi(process_->readLine().c_str());
    }

    [[nodiscard]] bool isReady() const { return port_ != 0; }
    [[nodiscard]] std::string host() const { return "quillomat.localhost:" + std::to_string(port_); }
    /// What goes wrong from here on, as JSON.
    void plan(const std::string& faults) const { folder_.add(root_ + "/faults.json", faults); }
    /// The requests that have come so far, one a line.
    [[nodiscard]] std::string requests() const { return folder_.contentOf(root_ + "/requests.log"); }

private:
    const TemporaryFolder& folder_;
    std::string root_;
    std::unique_ptr<Process> process_;
    int port_ = 0;
};

/// Certificates are made once for all tests of a program.
inline const TestAuthority& sharedAuthority() {
    static const TemporaryFolder folder;
    static const TestAuthority authority(folder.path());
    return authority;
}

inline const Certificate& sharedCertificate() {
    static const Certificate certificate = sharedAuthority().issue("server", allTestHosts);
    return certificate;
}

/// What every test of the road over the web has: a user's documents, a maker's folders, and the site they make.
class SiteTest : public CommandTest {
protected:
    void SetUp() override {
        const std::string missing = missingForServers(neededPrograms());
        if (!missing.empty()) {
            GTEST_SKIP() << missing;
        }
        ASSERT_TRUE(sharedAuthority().isReady());
    }
    [[nodiscard]] virtual Words neededPrograms() const { return {"openssl", "python3"}; }

    /// A command of the maker's: the maker's documents, and resources of the maker's own.
    Ran runMaker(Words words) const {
        words.insert(words.end(), {"--documents", folder.path("maker/documents"), "--resources", makersResources});
        return runProgram(folder, std::move(words));
    }
    void makerImports(const std::string& name, const std::string& author) const {
        const std::string stem = addImportFiles(name, author);
        ASSERT_EQ(runMaker({"import", "--replace", stem + ".cfg", stem + ".png"}).status, 0);
    }
    Ran publish(Words more = {}) const {
        more.insert(more.begin(), {"publish", folder.path("site")});
        return runMaker(std::move(more));
    }
    [[nodiscard]] Value publishedCatalogue() const {
        const auto parsed = parseJson(folder.contentOf("site/quillomat/updates/main.json"));
        return parsed ? *parsed : Value();
    }
    /// A copy of the fixtures' catalogue that a test may change.
    void ownMakersResources() {
        makersResources = folder.path("maker/resources");
        std::filesystem::create_directories(makersResources);
        std::filesystem::copy(fixturesPath("catalogue"), makersResources, std::filesystem::copy_options::recursive);
    }

    std::string makersResources = fixturesPath("catalogue");
};

} // namespace quillomat::testing

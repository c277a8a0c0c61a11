// The options that every command takes.
#pragma once

#include <cstdint>
#include <string>

namespace quillomat {

struct GlobalOptions {
    std::string documents;     // empty: the user's own
    std::string resources;     // empty: those that belong to the program
    std::string server;        // short host form, with a port when it is not the usual one
    std::string caCertificate; // a file with an authority to trust beside the system's
    double screenScale = 1;
    std::uint64_t memory = std::uint64_t{1} << 30; // bytes, the ceiling for one render
    std::string trace;                             // a file for the stages of the work; empty: none
    bool json = false;
    bool verbose = false;
};

} // namespace quillomat

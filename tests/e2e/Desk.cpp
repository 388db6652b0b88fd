#include "e2e/Desk.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace qvn::e2e {

Desk::Desk() {
    mDirectory = (std::filesystem::temp_directory_path() / "qvn-e2e-XXXXXX").string();
    if (!mkdtemp(mDirectory.data())) {
        throw std::runtime_error("mkdtemp");
    }
}

Desk::~Desk() {
    std::filesystem::remove_all(mDirectory);
}

std::string Desk::file(const std::string& name, const std::string& content) const {
    const std::string path = mDirectory + "/" + name;
    std::ofstream(path) << content;
    return path;
}

std::unique_ptr<Process> Desk::start(const std::string& command, Process::Environment variables) const {
    variables.insert({"QVN_HOST_DIR", mDirectory});
    return std::make_unique<Process>("exec " + command, variables);
}

std::unique_ptr<Process> Desk::simulator(const std::string& options, Process::Environment variables) const {
    auto process = start("can-service-sim " + options, std::move(variables));
    EXPECT_TRUE(process->waitForOutput("service ")) << "can-service-sim did not start: " << process->errors();
    return process;
}

std::unique_ptr<Process> Desk::watch(const std::string& properties) const {
    auto process = start("vehiclectl watch " + properties);
    EXPECT_TRUE(process->waitForOutput("available")) << "watch shows nothing: " << process->errors();
    return process;
}

Desk::Result Desk::run(const std::string& command, Process::Environment variables) const {
    const auto process = start(command, std::move(variables));
    process->closeInput();
    const std::optional<int> exitCode = process->wait();
    return {exitCode, process->output(), process->errors()};
}

}  // namespace qvn::e2e

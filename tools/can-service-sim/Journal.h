#pragma once

#include <chrono>
#include <string>

#include "desk/Output.h"

namespace qvn::tools {

/// What the simulator tells on standard output: one line an event, with the seconds since its start.
class Journal {
public:
    enum class Detail {
        Quiet,   ///< nothing
        Normal,  ///< sets, message status, reverse line, service; what a person at the desk wants to see happen
        All      ///< also every signal value and subscription
    };

    Journal(Output& output, Detail detail) : output_(output), detail_(detail) {}

    void note(const std::string& text) const { print(Detail::Normal, text); }
    void detail(const std::string& text) const { print(Detail::All, text); }

    /// An error, on standard error, whatever the detail.
    static void error(const std::string& text);

private:
    void print(Detail least, const std::string& text) const;

    Output& output_;
    Detail detail_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace qvn::tools

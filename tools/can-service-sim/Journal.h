#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "can-service-sim/trace/TraceEvents.h"
#include "desk/Json.h"

namespace qvn::tools {

/// What the simulator tells on standard output, with the seconds since its start: one line an event, for people or as
/// JSON.
class Journal {
public:
    enum class Detail {
        Quiet,   ///< nothing
        Normal,  ///< sets, message status, reverse line, service; what a person at the desk wants to see happen
        All      ///< also every signal value and subscription
    };
    enum class Form { Lines, Objects };

    /// @param write takes whole lines
    Journal(std::function<void(std::string)> write, Detail detail, Form form)
        : mWrite(std::move(write)), mDetail(detail), mForm(form) {}

    /// Also tells every event of Detail::Normal, whatever the detail is, as the object that it is in JSON.
    void listen(std::function<void(const Json& event)> listener) { mListener = std::move(listener); }

    void service(bool up) const;
    void message(std::uint32_t code, bool timedOut) const;
    void reverse(bool engaged) const;
    void fault(const FaultEvent& fault) const;
    /// @param set the number of this set, by which answers refer to it
    /// @param answers how many are to follow
    void set(std::size_t set, std::uint32_t code, std::int32_t value, const std::string& raw,
             std::size_t answers) const;
    void ignoredSet(std::uint32_t code, const std::string& raw, const std::string& reason) const;
    void answer(std::size_t set, std::uint32_t code, const std::string& raw) const;
    /// An answer that cannot be given; also an error.
    void noAnswer(std::size_t set, const std::string& reason) const;
    /// In all detail only, unless none of the codes is known: such a client receives nothing.
    void subscribed(std::size_t codes, std::size_t known) const;
    /// Anything else that a person should know.
    void note(const std::string& text) const { remark(Detail::Normal, text); }

    // In all detail only.
    void detail(const std::string& text) const { remark(Detail::All, text); }
    void signal(std::uint32_t code, const std::string& raw) const;
    void stops(std::uint32_t code) const;

    /// An error, on standard error, whatever the detail.
    static void error(const std::string& text);

private:
    double elapsed() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count(); }
    /// @param fields adds what the event is about
    Json object(const char* event, const std::function<void(Json& object)>& fields) const;
    void remark(Detail least, const std::string& text) const;
    void tell(Detail least, const char* event, const std::string& text,
              const std::function<void(Json& object)>& fields) const;

    std::function<void(std::string)> mWrite;
    std::function<void(const Json&)> mListener;
    Detail mDetail;
    Form mForm;
    std::chrono::steady_clock::time_point mStart = std::chrono::steady_clock::now();
};

}  // namespace qvn::tools

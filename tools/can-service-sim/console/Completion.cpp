#include "can-service-sim/console/Completion.h"

#include <algorithm>
#include <optional>

#include "can-service-sim/trace/TraceCommands.h"
#include "desk/SignalNames.h"
#include "desk/SignalNotes.h"

namespace qvn::tools {
namespace {

using Words = std::vector<std::string>;

void add(Words& words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
}

Words valuesOf(const std::string& name) {
    if (name == "reverse") {
        return {"0", "1"};
    }
    if (name == "service") {
        return {"down", "up"};
    }
    Words words;
    if (const std::optional<std::uint32_t> signal = lookUpCode(NameKind::Received, name)) {
        for (const auto& [number, value] : SignalNotes::instance().of(*signal).values) {
            words.push_back(value);
        }
        add(words, {"ramp", "random", "sine", "step"});
    }
    return words;
}

Words commandsFor(const std::string& name) {
    const bool isMessage = lookUpCode(NameKind::Message, name).has_value();
    Words words = commandsOf(isMessage ? TraceCommand::Of::Message : TraceCommand::Of::Signal);
    std::sort(words.begin(), words.end());
    return words;
}

/// What may stand where a word begins.
Words wordsBehind(const std::string& before, const Words& commands) {
    const bool first = before.find_first_not_of(" \t") == std::string::npos;
    Words words = first ? commands : Words();
    for (const NameKind kind : {NameKind::Received, NameKind::Message}) {
        add(words, knownNames(kind));
    }
    add(words, first ? Words{"reverse", "service"} : Words{"every", "for", "over", "seed"});
    return words;
}

}  // namespace

std::string Completion::common(const std::string& line) const {
    std::string common = words.empty() ? "" : words.front();
    for (const std::string& word : words) {
        common.erase(std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first, common.end());
    }
    return common.substr(std::min(common.size(), line.size() - begin));
}

Completion completeLine(const std::string& line, const Words& commands) {
    const std::size_t word = line.find_last_of(" \t") + 1;
    const std::size_t mark = line.find_first_of("=!", word);
    Completion completion;
    if (mark == std::string::npos) {
        completion.begin = word;
        completion.words = wordsBehind(line.substr(0, word), commands);
    } else {
        const std::string name = line.substr(word, mark - word);
        completion.begin = mark + 1;
        completion.words = line[mark] == '=' ? valuesOf(name) : commandsFor(name);
    }
    const std::string begun = line.substr(completion.begin);
    Words& words = completion.words;
    words.erase(std::remove_if(words.begin(), words.end(),
                               [&](const std::string& known) { return known.compare(0, begun.size(), begun) != 0; }),
                words.end());
    return completion;
}

}  // namespace qvn::tools

#pragma once

#include <histedit.h>

#include <functional>
#include <string>

#include "can-service-sim/console/Completion.h"

namespace qvn::tools {

/// The prompt on standard input and output, which are a terminal: a line that a person edits, with a history that is
/// kept in $XDG_STATE_HOME (or ~/.local/state), and text that appears above it. It waits for the terminal in all that
/// it does, and so has a process of its own; Prompt starts it.
class LineEditor {
public:
    /// Texts to show come through `texts` and `errors`, which the process at their other end closes when it ends.
    /// Entered lines go to `lines`; the end of input (Ctrl-D) becomes the line "quit".
    struct Pipes {
        int texts;
        int errors;
        int lines;
    };
    /// Stops the other process along with this one (Ctrl-Z).
    using Suspend = std::function<void()>;

    LineEditor(const Pipes& pipes, std::function<Completion(const std::string&)> complete, Suspend suspend);
    ~LineEditor();
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// Edits until the texts end or the terminal is gone.
    void run();

private:
    struct Source {
        int fd;
        std::string cut;  // a line that is not there as a whole yet
    };

    static int readKey(EditLine* editor, wchar_t* key);
    static unsigned char completeKey(EditLine* editor, int key);

    void bindKeys();
    void enter(std::string line);
    bool awaitInput();
    void takeSignals();
    void suspend();
    bool isForeground();
    void takeText(Source& source);
    void showLastErrors();
    void showAbove(const std::string& text);
    std::string eraseLine() const;
    int nextKey(wchar_t* key);
    bool refuses(char key);
    unsigned char complete();
    std::string listed(const Completion& completion) const;
    int columns() const;

    Source mTexts;
    Source mErrors;
    int mLines;
    std::function<Completion(const std::string&)> mComplete;
    Suspend mSuspend;
    int mSignals;
    EditLine* mEditor;
    History* mHistory;
    std::string mHistoryFile;
    std::string mTyped;        // and not looked at yet
    bool mEditing = false;     // a line stands on the terminal
    bool mForeground = false;  // as it was last
    bool mTerminalGone = false;
    bool mQuits = false;            // nothing is asked for any more
    std::size_t mRefused = 0;       // characters of a line that is too long
    bool mCompletedBefore = false;  // the key before was a Tab, too
};

}  // namespace qvn::tools

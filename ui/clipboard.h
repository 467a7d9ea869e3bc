#pragma once

// Text on the system clipboard. The window provides the X CLIPBOARD selection; without
// a window (tests, off-screen rendering) the text stays in memory.

#include <string>

namespace halvern {

class ZClipboard {
public:
    virtual ~ZClipboard() = default;
    virtual void SetText(const std::string& utf8) = 0;
    // The clipboard's text, or empty when it holds none.
    virtual std::string Text() = 0;
};

class ZMemoryClipboard : public ZClipboard {
public:
    void SetText(const std::string& utf8) override { text_ = utf8; }
    std::string Text() override { return text_; }

private:
    std::string text_;
};

} // namespace halvern

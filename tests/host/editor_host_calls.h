#pragma once

// What a test host heard from a plug-in's editor: parameter gestures and size requests,
// in the order they came.

#include <vector>

namespace editorhost {

struct HostCall {
    enum class Kind { Begin, Perform, End, Resize };
    Kind kind;
    int index = 0;     // the parameter (gestures)
    double value = 0;  // the normalised value (Perform)
    int width = 0;     // the size asked for (Resize)
    int height = 0;
};

using HostCalls = std::vector<HostCall>;

} // namespace editorhost

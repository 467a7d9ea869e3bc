#pragma once

// The common base of values that carry a name given by their owner or by the "name"
// attribute of a layout element. ZValueNumber derives from it to share the reading of
// that attribute.

#include "core/z_value.h"
#include "state/zml_element.h"

#include <string>

namespace halvern {

class ZValueList : public ZValue {
public:
    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }

    // Reads the "name" attribute; a missing attribute keeps the current name.
    void loadAttributes(const ZMLElement& element) override
    {
        if (const std::string* name = element.findAttribute("name"))
            name_ = *name;
    }

private:
    std::string name_;
};

} // namespace halvern

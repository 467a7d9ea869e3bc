#pragma once

// What one level of the plug-in chain is handed when it stores its state into a markup
// element or reads it back. Each level lists its items once, through the item functions
// below, and the same list serves both directions: storing writes an item only when it
// differs from its default, reading takes it back or restores the default when it is
// absent or unreadable. So absent means default everywhere, and a document that is
// missing items, or holds items a later version added, still loads.

#include "core/z_enum_names.h"
#include "state/zml_element.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace halvern {

class ZSerializationContext {
public:
    ZSerializationContext(ZMLElement& element, bool storing) : element_(element), storing_(storing) {}

    bool storing() const { return storing_; }
    bool reading() const { return !storing_; }
    ZMLElement& element() const { return element_; }

    // Integers as decimal text; a read value is limited to [minimum, maximum].
    void item(std::string_view name, int32_t& value, int32_t defaultValue, int32_t minimum = INT32_MIN,
              int32_t maximum = INT32_MAX) const;
    // Booleans as "0" and "1"; any other number reads as true.
    void item(std::string_view name, bool& value, bool defaultValue) const;
    // Doubles in the shortest text that reads back to the same double, so a stored state
    // reloads bit for bit; non-finite values are never written or read.
    void item(std::string_view name, double& value, double defaultValue) const;
    void item(std::string_view name, std::string& value, std::string_view defaultValue) const;
    // Enumerations by their decimal index, limited to the enumeration's names.
    template <class E>
        requires std::is_enum_v<E>
    void item(std::string_view name, E& value, E defaultValue) const
    {
        auto index = static_cast<int32_t>(value);
        const auto count = static_cast<int32_t>(ZEnumNames<E>::names().size());
        item(name, index, static_cast<int32_t>(defaultValue), 0, count - 1);
        value = static_cast<E>(index);
    }
    // A list of doubles as one attribute, separated by blanks; unreadable entries are dropped.
    void item(std::string_view name, std::vector<double>& values) const;

    // An item that is always written and, when absent on reading, keeps its value.
    void kept(std::string_view name, int32_t& value) const;
    void kept(std::string_view name, std::string& value) const;

    // Storing: a new child of that name. Reading: the first child of that name, or null.
    ZMLElement* child(std::string_view name) const;
    // Reading: every child of that name, in document order.
    std::vector<ZMLElement*> children(std::string_view name) const;

    // A child that holds a group of items. Storing writes it only when something in it
    // differs from its defaults; reading an absent one reads every item as absent.
    template <class Fill>
    void section(std::string_view name, Fill&& fill) const
    {
        ZMLElement scratch{std::string(name)};
        ZMLElement* source = storing_ ? nullptr : element_.findChild(name);
        fill(on(source != nullptr ? *source : scratch));
        if (storing_ && (!scratch.attributes().empty() || !scratch.children().empty() || !scratch.text().empty()))
            element_.addCopy(scratch);
    }

    // The same direction on another element.
    ZSerializationContext on(ZMLElement& element) const { return {element, storing_}; }

private:
    const std::string* text(std::string_view name) const;

    ZMLElement& element_;
    bool storing_;
};

// Reads a document through serialize, a function that serves both directions of one
// owner's state. When reading fails part-way, the state from before (stored through the
// same function first) is read back and the error thrown on, so a document that an owner
// refuses leaves that owner as it was.
template <class Serialize>
void ZReadOrRestore(ZMLElement& document, Serialize&& serialize)
{
    ZMLElement previous(document.name());
    serialize(ZSerializationContext(previous, true));
    try {
        serialize(ZSerializationContext(document, false));
    } catch (...) {
        serialize(ZSerializationContext(previous, false));
        throw;
    }
}

// The shortest decimal text that reads back to the same double.
std::string ZShortestText(double value);

} // namespace halvern

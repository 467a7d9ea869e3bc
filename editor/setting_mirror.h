#pragma once

// Value objects for settings that live in plain structs (an LFO's settings, its shape, a
// MIDI controller record). The controls of a page edit a copy of the settings through
// value objects with ranges, defaults and display texts, each bound by a ZValueBinding.
// Pull takes the model's current settings into the copy (the page calls it on every
// tick, so that changes made elsewhere show). An edit reads the model's settings, changes
// the one edited setting and writes them back through the model's own setter, all under
// the processing lock: the audio thread sees the whole change at once, and a change made
// meanwhile to another setting (by the host, say) is kept.

#include "core/value_displays.h"
#include "core/z_enum_names.h"
#include "core/z_exception.h"
#include "core/z_lock.h"
#include "core/z_value_enum.h"
#include "core/z_value_number.h"
#include "editor/value_binding.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace halvern {

template <class Snapshot>
class ZSettingMirror : public std::enable_shared_from_this<ZSettingMirror<Snapshot>> {
public:
    using Reader = std::function<Snapshot()>;
    // Writes the settings through the setter of the part that group names.
    using Writer = std::function<void(const Snapshot&, int group)>;
    using ErrorHandler = std::function<void(const std::string& message)>;

    // How a setting is read from and written into the settings, as a number.
    struct Access {
        std::function<double(const Snapshot&)> get;
        std::function<void(Snapshot&, double)> set;
    };

    // A member of the settings (a number, a bool or an enumeration).
    template <class T>
    static Access Field(T Snapshot::*member)
    {
        return {[member](const Snapshot& s) { return toNumber(s.*member); },
                [member](Snapshot& s, double v) { s.*member = fromNumber<T>(v); }};
    }
    // A member of a part of the settings.
    template <class Part, class T>
    static Access Field(Part Snapshot::*part, T Part::*member)
    {
        return {[part, member](const Snapshot& s) { return toNumber(s.*part.*member); },
                [part, member](Snapshot& s, double v) { s.*part.*member = fromNumber<T>(v); }};
    }

    // Shared, because the bindings handed out keep it alive. A write that throws
    // ZException changes nothing and hands the message to the error handler.
    static std::shared_ptr<ZSettingMirror> Create(ZLock& processingLock, Reader read, Writer write,
                                                  ErrorHandler onError = {})
    {
        return std::shared_ptr<ZSettingMirror>(
            new ZSettingMirror(processingLock, std::move(read), std::move(write), std::move(onError)));
    }

    // A continuous number; with a taper the knob spends more travel on the low end.
    ZValueDouble& AddNumber(const std::string& key, Access access, double minimum, double maximum,
                            double defaultValue, std::function<std::unique_ptr<ZValue>(std::unique_ptr<ZValue>)> taper = {})
    {
        Entry& entry = add(key, std::move(access), false);
        auto number = std::make_unique<ZValueDouble>(&entry.number, minimum, maximum, defaultValue, 0.0);
        ZValueDouble& inner = *number;
        entry.value = taper ? taper(std::move(number)) : std::move(number);
        return inner;
    }
    // A whole number from minimum to maximum.
    ZValueInt& AddInteger(const std::string& key, Access access, int minimum, int maximum, int defaultValue)
    {
        Entry& entry = add(key, std::move(access), true);
        auto number = std::make_unique<ZValueInt>(&entry.index, minimum, maximum, defaultValue, 1);
        ZValueInt& inner = *number;
        entry.value = std::move(number);
        return inner;
    }
    // An on/off switch shown "On" and "Off".
    ZValueInt& AddSwitch(const std::string& key, Access access, bool defaultValue)
    {
        ZValueInt& value = AddInteger(key, std::move(access), 0, 1, defaultValue ? 1 : 0);
        value.setFormatter(FormatOnOff);
        return value;
    }
    template <class E>
    void AddEnum(const std::string& key, Access access, E defaultValue)
    {
        Entry& entry = add(key, std::move(access), true);
        entry.value = std::make_unique<ZValueEnum<E>>(&entry.index, defaultValue);
    }

    // The label a control shows, its help and the caller's group of a setting.
    void Describe(const std::string& key, std::string label, std::string help, int group = 0)
    {
        Entry& entry = find(key);
        entry.label = std::move(label);
        entry.help = std::move(help);
        entry.group = group;
    }

    // Takes the model's settings into the copy.
    void Pull()
    {
        const Snapshot settings = read_();
        for (auto& [key, entry] : entries_)
            entry->store(entry->access.get(settings));
    }
    // A control's binding of a setting: its label, help, value and display texts.
    std::shared_ptr<ZParameterBinding> Binding(const std::string& key)
    {
        const Entry& entry = find(key);
        return std::make_shared<ZValueBinding>(entry.label, entry.help, *entry.value, lock_,
                                               [self = this->shared_from_this(), key] { self->write(key); });
    }

private:
    ZSettingMirror(ZLock& processingLock, Reader read, Writer write, ErrorHandler onError)
        : lock_(processingLock), read_(std::move(read)), write_(std::move(write)), onError_(std::move(onError))
    {
    }

    void write(const std::string& key)
    {
        const Entry& entry = find(key);
        try {
            ZLockHolder hold(lock_, -1);
            Snapshot settings = read_();
            entry.access.set(settings, entry.shown());
            write_(settings, entry.group);
        } catch (const ZException& error) {
            if (onError_)
                onError_(error.what());
        }
    }

    struct Entry {
        Access access;
        bool stepped = false;
        double number = 0.0;
        int32_t index = 0;
        std::unique_ptr<ZValue> value;
        std::string label;
        std::string help;
        int group = 0;

        double shown() const { return stepped ? static_cast<double>(index) : number; }
        void store(double v)
        {
            if (stepped)
                index = static_cast<int32_t>(std::lround(v));
            else
                number = v;
        }
    };

    template <class T>
    static double toNumber(T value)
    {
        if constexpr (std::is_enum_v<T>)
            return static_cast<double>(static_cast<std::underlying_type_t<T>>(value));
        else
            return static_cast<double>(value);
    }
    template <class T>
    static T fromNumber(double value)
    {
        if constexpr (std::is_same_v<T, bool>)
            return value >= 0.5;
        else if constexpr (std::is_enum_v<T>)
            return static_cast<T>(static_cast<std::underlying_type_t<T>>(std::lround(value)));
        else if constexpr (std::is_integral_v<T>)
            return static_cast<T>(std::lround(value));
        else
            return static_cast<T>(value);
    }

    Entry& add(const std::string& key, Access access, bool stepped)
    {
        auto entry = std::make_unique<Entry>();
        entry->access = std::move(access);
        entry->stepped = stepped;
        entry->label = key;
        Entry& added = *entry;
        entries_[key] = std::move(entry);
        return added;
    }
    Entry& find(const std::string& key) const
    {
        const auto found = entries_.find(key);
        if (found == entries_.end())
            throw std::out_of_range("no setting " + key);
        return *found->second;
    }

    ZLock& lock_;
    Reader read_;
    Writer write_;
    ErrorHandler onError_;
    // Each entry stays where it is: its value object points into it.
    std::map<std::string, std::unique_ptr<Entry>> entries_;
};

} // namespace halvern

#pragma once

// A control's view of a setting that has no value object of its own (a modulator
// target's range, a MultiParameter's switches and bank count): reading and writing go
// through functions given by the page that owns the setting, which also decides how a
// write reaches the model (a published target list, a setter under the processing lock).

#include "ui/parameter_binding.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace halvern {

class ZFunctionBinding : public ZParameterBinding {
public:
    using Getter = std::function<double()>;         // normalised 0..1
    using Setter = std::function<void(double)>;     // normalised 0..1
    using Display = std::function<std::string(double)>;
    using Parser = std::function<std::optional<double>(const std::string&)>;

    // A continuous value shown as a percentage unless given texts of its own.
    ZFunctionBinding(std::string name, std::string help, Getter get, Setter set);

    // An on/off switch over a flag.
    static std::shared_ptr<ZFunctionBinding> Switch(std::string name, std::string help, std::function<bool()> get,
                                                    std::function<void(bool)> set);
    // A choice among named items, by index.
    static std::shared_ptr<ZFunctionBinding> Choice(std::string name, std::string help, std::vector<std::string> items,
                                                    std::function<int()> get, std::function<void(int)> set);

    // Texts in the value's own units.
    void SetTexts(Display display, Parser parse);
    // A stepped value with steps + 1 positions, shown by display.
    void SetSteps(int steps);
    void SetDefault(double normalized) { default_ = normalized; }

    std::string Name() const override { return name_; }
    std::string HelpText() const override { return help_; }
    double Value() const override { return get_(); }
    double DefaultValue() const override { return default_; }
    int StepCount() const override { return steps_; }
    std::vector<std::string> ItemNames() const override { return items_; }
    std::string DisplayText(double normalized) const override;
    std::optional<double> Parse(const std::string& text) const override;
    void BeginEdit() override {}
    void SetValue(double normalized) override;
    void EndEdit() override {}

private:
    int indexOf(double normalized) const;

    std::string name_;
    std::string help_;
    Getter get_;
    Setter set_;
    Display display_;
    Parser parse_;
    std::vector<std::string> items_;
    int steps_ = 0;
    double default_ = 0.0;
};

} // namespace halvern

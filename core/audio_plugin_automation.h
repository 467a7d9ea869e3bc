#pragma once

// The parameter side of the plug-in core: the registry of host-visible parameters, the
// host adapter through which changes made inside the plug-in reach the host, and the
// automation adapters that expose groups of values which are not plain effect
// parameters (such as a position on a plane) as automatable parameters.

#include "core/audio_plugin_adapter.h"
#include "core/parameter_registry.h"

#include <random>
#include <vector>

namespace halvern {

template <typename Base>
class ZAudioPluginAutomation : public Base {
public:
    // A group of values registered one after another in the registry.
    class AutomationAdapter {
    public:
        virtual ~AutomationAdapter() = default;

        // Registers the group's values; each becomes one host parameter.
        void Register(ZAudioPluginAutomation& owner, const std::vector<std::pair<ZParameterInfo, ZValue*>>& values)
        {
            owner_ = &owner;
            first_ = owner.parameters().count();
            count_ = static_cast<int>(values.size());
            for (const auto& [info, value] : values)
                owner.parameters().add(info, value);
        }

        int firstIndex() const { return first_; }
        int valueCount() const { return count_; }

        // Tells the host that value i changed.
        void SendAutomationValue(int i)
        {
            if (owner_ != nullptr && i >= 0 && i < count_)
                owner_->parameters().markForHost(first_ + i);
        }
        // Sets value i from a normalised value and tells the host.
        void SendAutomationValueWithChange(int i, double normalized)
        {
            if (owner_ == nullptr || i < 0 || i >= count_)
                return;
            owner_->parameters().setNow(first_ + i, normalized);
            SendAutomationValue(i);
        }
        void SendAllAutomation()
        {
            for (int i = 0; i < count_; ++i)
                SendAutomationValue(i);
        }
        // Gives every value of the group a uniformly distributed random position.
        void Randomize(std::mt19937& generator)
        {
            std::uniform_real_distribution<double> uniform(0.0, 1.0);
            for (int i = 0; i < count_; ++i)
                SendAutomationValueWithChange(i, uniform(generator));
        }

    private:
        ZAudioPluginAutomation* owner_ = nullptr;
        int first_ = 0;
        int count_ = 0;
    };

    ZParameterRegistry& parameters() { return parameters_; }
    const ZParameterRegistry& parameters() const { return parameters_; }

    void SetHostAdapter(ZAudioPluginAdapter* adapter) { hostAdapter_ = adapter; }
    ZAudioPluginAdapter* hostAdapter() const { return hostAdapter_; }

    // Sends the changes flagged on the audio thread to the host. Runs on the host's main
    // thread (idle call) or the automation update thread, never on the audio thread.
    void SendPendingAutomation()
    {
        if (hostAdapter_ == nullptr)
            return;
        parameters_.sendMarked([this](int index, double value) { hostAdapter_->SendAutomation(index, value); });
    }

private:
    ZParameterRegistry parameters_;
    ZAudioPluginAdapter* hostAdapter_ = nullptr;
};

} // namespace halvern

#pragma once

// The project's own VST 3 class factory: the factory information and a list of classes,
// each with its record and a function that creates an instance. It keeps its own
// reference count; the library never deletes it (hosts release it).

#include <pluginterfaces/base/ipluginbase.h>

#include <atomic>
#include <vector>

namespace halvern {

class ZVST3PluginFactory : public Steinberg::IPluginFactory3 {
public:
    // Creates an instance; returns its interface that the class record announces, or null.
    using CreateFunction = Steinberg::FUnknown* (*)(void* context);

    explicit ZVST3PluginFactory(const Steinberg::PFactoryInfo& info);
    virtual ~ZVST3PluginFactory() = default;

    void registerClass(const Steinberg::PClassInfo2& info, CreateFunction create, void* context);

    // ---- FUnknown ----
    Steinberg::tresult PLUGIN_API queryInterface(const Steinberg::TUID iid, void** object) SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API addRef() SMTG_OVERRIDE;
    Steinberg::uint32 PLUGIN_API release() SMTG_OVERRIDE;

    // ---- IPluginFactory, 2 and 3 ----
    Steinberg::tresult PLUGIN_API getFactoryInfo(Steinberg::PFactoryInfo* info) SMTG_OVERRIDE;
    Steinberg::int32 PLUGIN_API countClasses() SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getClassInfo(Steinberg::int32 index, Steinberg::PClassInfo* info) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API createInstance(Steinberg::FIDString cid, Steinberg::FIDString iid, void** object) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getClassInfo2(Steinberg::int32 index, Steinberg::PClassInfo2* info) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API getClassInfoUnicode(Steinberg::int32 index, Steinberg::PClassInfoW* info) SMTG_OVERRIDE;
    Steinberg::tresult PLUGIN_API setHostContext(Steinberg::FUnknown* context) SMTG_OVERRIDE;

    Steinberg::uint32 referenceCount() const { return references_.load(); }

private:
    struct Entry {
        Steinberg::PClassInfo2 info;
        CreateFunction create;
        void* context;
    };
    const Entry* entry(Steinberg::int32 index) const;

    Steinberg::PFactoryInfo factoryInfo_;
    std::vector<Entry> classes_;
    std::atomic<Steinberg::uint32> references_{1};
};

} // namespace halvern

#include "host/vst3/vst3_plugin_factory.h"

#include <pluginterfaces/base/ustring.h>

#include <cstring>

namespace halvern {

using namespace Steinberg;

ZVST3PluginFactory::ZVST3PluginFactory(const PFactoryInfo& info) : factoryInfo_(info) {}

void ZVST3PluginFactory::registerClass(const PClassInfo2& info, CreateFunction create, void* context)
{
    classes_.push_back(Entry{info, create, context});
}

tresult PLUGIN_API ZVST3PluginFactory::queryInterface(const TUID iid, void** object)
{
    if (object == nullptr)
        return kInvalidArgument;
    if (FUnknownPrivate::iidEqual(iid, IPluginFactory3::iid) || FUnknownPrivate::iidEqual(iid, IPluginFactory2::iid) ||
        FUnknownPrivate::iidEqual(iid, IPluginFactory::iid) || FUnknownPrivate::iidEqual(iid, FUnknown::iid)) {
        addRef();
        *object = this;
        return kResultOk;
    }
    *object = nullptr;
    return kNoInterface;
}

uint32 PLUGIN_API ZVST3PluginFactory::addRef() { return ++references_; }

uint32 PLUGIN_API ZVST3PluginFactory::release()
{
    // The factory lives as long as the library: a count of 0 ends no life.
    const uint32 count = references_.load();
    if (count == 0)
        return 0;
    return --references_;
}

tresult PLUGIN_API ZVST3PluginFactory::getFactoryInfo(PFactoryInfo* info)
{
    if (info == nullptr)
        return kInvalidArgument;
    *info = factoryInfo_;
    return kResultOk;
}

int32 PLUGIN_API ZVST3PluginFactory::countClasses() { return static_cast<int32>(classes_.size()); }

const ZVST3PluginFactory::Entry* ZVST3PluginFactory::entry(int32 index) const
{
    return index >= 0 && index < static_cast<int32>(classes_.size()) ? &classes_[static_cast<size_t>(index)] : nullptr;
}

tresult PLUGIN_API ZVST3PluginFactory::getClassInfo(int32 index, PClassInfo* info)
{
    const Entry* found = entry(index);
    if (found == nullptr || info == nullptr)
        return kInvalidArgument;
    *info = PClassInfo(found->info.cid, found->info.cardinality, found->info.category, found->info.name);
    return kResultOk;
}

tresult PLUGIN_API ZVST3PluginFactory::getClassInfo2(int32 index, PClassInfo2* info)
{
    const Entry* found = entry(index);
    if (found == nullptr || info == nullptr)
        return kInvalidArgument;
    *info = found->info;
    return kResultOk;
}

tresult PLUGIN_API ZVST3PluginFactory::getClassInfoUnicode(int32 index, PClassInfoW* info)
{
    const Entry* found = entry(index);
    if (found == nullptr || info == nullptr)
        return kInvalidArgument;
    info->fromAscii(found->info);
    return kResultOk;
}

tresult PLUGIN_API ZVST3PluginFactory::createInstance(FIDString cid, FIDString iid, void** object)
{
    if (cid == nullptr || iid == nullptr || object == nullptr)
        return kInvalidArgument;
    *object = nullptr;
    for (const Entry& candidate : classes_) {
        if (!FUnknownPrivate::iidEqual(candidate.info.cid, cid))
            continue;
        FUnknown* instance = candidate.create(candidate.context);
        if (instance == nullptr)
            return kOutOfMemory;
        // The instance's first reference is handed over to the interface asked for.
        const tresult result = instance->queryInterface(iid, object);
        instance->release();
        return result == kResultOk ? kResultOk : kNoInterface;
    }
    return kNoInterface;
}

tresult PLUGIN_API ZVST3PluginFactory::setHostContext(FUnknown*) { return kResultOk; }

} // namespace halvern

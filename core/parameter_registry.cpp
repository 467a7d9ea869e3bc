#include "core/parameter_registry.h"

#include "core/z_exception.h"

#include <cmath>
#include <limits>

namespace halvern {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

double clampNormalized(double x)
{
    return x < 0.0 ? 0.0 : (x > 1.0 ? 1.0 : x);
}

bool isStepped(ZParameterType type)
{
    return type == ZParameterType::Integer || type == ZParameterType::Enumeration || type == ZParameterType::Switch;
}

} // namespace

struct ZParameterRegistry::Record {
    ZParameterInfo info;
    ZValue* value = nullptr;
    double defaultNormalized = 0.0;
    std::atomic<double> parked{kNone};
    std::atomic<bool> parkedJumps{false}; // the parked change is not to glide
    std::atomic<bool> markedForHost{false};
    double glideFrom = 0.0;
    double glideTo = 0.0;
};

ZParameterRegistry::ZParameterRegistry() = default;
ZParameterRegistry::~ZParameterRegistry() = default;

int ZParameterRegistry::add(ZParameterInfo info, ZValue* value)
{
    auto record = std::make_unique<Record>();
    record->info = std::move(info);
    record->value = value;
    record->defaultNormalized = value != nullptr ? value->getNormalized() : 0.0;
    records_.push_back(std::move(record));
    gliding_.reserve(records_.size());
    return count() - 1;
}

const ZParameterInfo& ZParameterRegistry::info(int index) const
{
    if (!isValidIndex(index))
        throw ZException("Invalid parameter index.");
    return records_[static_cast<size_t>(index)]->info;
}

ZValue* ZParameterRegistry::value(int index) const
{
    info(index);
    return records_[static_cast<size_t>(index)]->value;
}

double ZParameterRegistry::defaultNormalized(int index) const
{
    info(index);
    return records_[static_cast<size_t>(index)]->defaultNormalized;
}

double ZParameterRegistry::normalized(int index) const
{
    info(index);
    const Record& record = *records_[static_cast<size_t>(index)];
    const double parked = record.parked.load(std::memory_order_acquire);
    if (!std::isnan(parked))
        return parked;
    return record.value != nullptr ? record.value->getNormalized() : 0.0;
}

bool ZParameterRegistry::write(Record& record, double normalized)
{
    return record.value != nullptr && record.value->setNormalized(normalized);
}

bool ZParameterRegistry::setNow(int index, double normalized)
{
    info(index);
    if (std::isnan(normalized))
        return false;
    Record& record = *records_[static_cast<size_t>(index)];
    record.parked.store(kNone, std::memory_order_release);
    return write(record, clampNormalized(normalized));
}

void ZParameterRegistry::park(int index, double normalized, bool jump)
{
    info(index);
    Record& record = *records_[static_cast<size_t>(index)];
    if (std::isnan(normalized) || record.value == nullptr)
        return;
    record.parkedJumps.store(jump, std::memory_order_release);
    record.parked.store(clampNormalized(normalized), std::memory_order_release);
    anyParked_.store(true, std::memory_order_release);
}

void ZParameterRegistry::takeParked()
{
    if (!anyParked_.exchange(false, std::memory_order_acq_rel))
        return;
    for (auto& record : records_)
        if (const double target = record->parked.exchange(kNone, std::memory_order_acq_rel); !std::isnan(target))
            write(*record, target);
}

bool ZParameterRegistry::beginBlock(int n, bool glide)
{
    gliding_.clear();
    blockLength_ = n;
    blockDone_ = 0;
    if (!anyParked_.exchange(false, std::memory_order_acq_rel))
        return false;
    for (auto& record : records_) {
        const double target = record->parked.exchange(kNone, std::memory_order_acq_rel);
        if (std::isnan(target))
            continue;
        const bool jumps = record->parkedJumps.exchange(false, std::memory_order_acq_rel);
        if (!glide || jumps || n <= 1 || isStepped(record->info.type)) {
            write(*record, target);
            continue;
        }
        record->glideFrom = record->value->getNormalized();
        record->glideTo = target;
        gliding_.push_back(record.get());
    }
    return !gliding_.empty();
}

void ZParameterRegistry::advanceGlides(int samples)
{
    if (gliding_.empty() || blockLength_ <= 0)
        return;
    blockDone_ += samples;
    const double fraction = static_cast<double>(blockDone_) / blockLength_;
    for (Record* record : gliding_)
        write(*record, record->glideFrom + (record->glideTo - record->glideFrom) * fraction);
}

void ZParameterRegistry::finishGlides()
{
    for (Record* record : gliding_)
        write(*record, record->glideTo);
    gliding_.clear();
}

void ZParameterRegistry::markForHost(int index)
{
    if (!isValidIndex(index))
        return;
    records_[static_cast<size_t>(index)]->markedForHost.store(true, std::memory_order_release);
    anyMarked_.store(true, std::memory_order_release);
}

void ZParameterRegistry::sendMarked(const std::function<void(int, double)>& send)
{
    if (!anyMarked_.exchange(false, std::memory_order_acq_rel))
        return;
    for (int index = 0; index < count(); ++index)
        if (records_[static_cast<size_t>(index)]->markedForHost.exchange(false, std::memory_order_acq_rel))
            send(index, normalized(index));
}

} // namespace halvern

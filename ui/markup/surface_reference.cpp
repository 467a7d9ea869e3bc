#include "ui/markup/surface_reference.h"

#include <cairo.h>

#include <utility>

namespace halvern {

ZSurfaceReference::ZSurfaceReference(cairo_surface_t* surface)
    : surface_(surface ? cairo_surface_reference(surface) : nullptr)
{
}

ZSurfaceReference::~ZSurfaceReference()
{
    if (surface_)
        cairo_surface_destroy(surface_);
}

ZSurfaceReference::ZSurfaceReference(const ZSurfaceReference& other) : ZSurfaceReference(other.surface_) {}

ZSurfaceReference& ZSurfaceReference::operator=(const ZSurfaceReference& other)
{
    ZSurfaceReference copy(other);
    std::swap(surface_, copy.surface_);
    return *this;
}

ZSurfaceReference::ZSurfaceReference(ZSurfaceReference&& other) noexcept
    : surface_(std::exchange(other.surface_, nullptr))
{
}

ZSurfaceReference& ZSurfaceReference::operator=(ZSurfaceReference&& other) noexcept
{
    std::swap(surface_, other.surface_);
    return *this;
}

} // namespace halvern

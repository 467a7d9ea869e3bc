#pragma once

// ZSurfaceReference: holds one reference to a cairo surface for as long as it lives, so
// an image stays valid however long its lender keeps it.

typedef struct _cairo_surface cairo_surface_t;

namespace halvern {

class ZSurfaceReference {
public:
    ZSurfaceReference() = default;
    // Takes a new reference to the surface (null gives an empty reference).
    explicit ZSurfaceReference(cairo_surface_t* surface);
    ~ZSurfaceReference();
    ZSurfaceReference(const ZSurfaceReference& other);
    ZSurfaceReference& operator=(const ZSurfaceReference& other);
    ZSurfaceReference(ZSurfaceReference&& other) noexcept;
    ZSurfaceReference& operator=(ZSurfaceReference&& other) noexcept;

    cairo_surface_t* get() const { return surface_; }

private:
    cairo_surface_t* surface_ = nullptr;
};

} // namespace halvern

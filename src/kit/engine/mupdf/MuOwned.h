#pragma once

// Owning holders for MuPDF objects, dropped with the calling thread's context. They live outside
// fz_try blocks; a block assigns the raw pointer (holder.p = fz_new_...) and never destroys one.

#include "MuTry.h"

#include <utility>

namespace mu {

template <class T, void (*Drop)(fz_context *, T *)> class Owned
{
public:
    Owned() = default;
    explicit Owned(T *pointer)
        : p(pointer)
    { }
    Owned(Owned &&other) noexcept
        : p(std::exchange(other.p, nullptr))
    { }
    Owned &operator=(Owned &&other) noexcept
    {
        if (this != &other) {
            reset();
            p = std::exchange(other.p, nullptr);
        }
        return *this;
    }
    Owned(const Owned &) = delete;
    Owned &operator=(const Owned &) = delete;
    ~Owned() { reset(); }

    void reset()
    {
        if (!p)
            return;
        T *const dropped = std::exchange(p, nullptr);
        fz_context *ctx = context();
        runQuietly(ctx, [&] { Drop(ctx, dropped); });
    }
    T *release() { return std::exchange(p, nullptr); }
    explicit operator bool() const { return p != nullptr; }

    T *p = nullptr;
};

using Buffer = Owned<fz_buffer, fz_drop_buffer>;
using Output = Owned<fz_output, fz_drop_output>;
using Device = Owned<fz_device, fz_drop_device>;
using Pixmap = Owned<fz_pixmap, fz_drop_pixmap>;
using DisplayList = Owned<fz_display_list, fz_drop_display_list>;
using StextPage = Owned<fz_stext_page, fz_drop_stext_page>;
using GraftMap = Owned<pdf_graft_map, pdf_drop_graft_map>;
using Object = Owned<pdf_obj, pdf_drop_obj>;
using Stream = Owned<fz_stream, fz_drop_stream>;
using Document = Owned<pdf_document, pdf_drop_document>;
using Image = Owned<fz_image, fz_drop_image>;
using Processor = Owned<pdf_processor, pdf_drop_processor>;

} // namespace mu

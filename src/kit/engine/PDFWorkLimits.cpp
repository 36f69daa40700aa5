#include "PDFWorkLimits.h"

#include <mutex>

namespace {

std::mutex g_mutex;
PDFWorkLimits g_limits;

} // namespace

PDFWorkLimits PDFWorkLimits::current()
{
    const std::lock_guard lock(g_mutex);
    return g_limits;
}

void PDFWorkLimits::setCurrent(const PDFWorkLimits &limits)
{
    const std::lock_guard lock(g_mutex);
    g_limits = limits;
}

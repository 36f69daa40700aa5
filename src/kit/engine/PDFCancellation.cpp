#include "PDFCancellation.h"

#include <algorithm>

namespace {

void raise(int *word)
{
    std::atomic_ref<int>(*word).store(1);
}

} // namespace

void PDFCancellation::cancel()
{
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    for (int *word : m_words)
        raise(word);
}

void PDFCancellation::attach(int *abortWord)
{
    const std::lock_guard lock(m_mutex);
    m_words.push_back(abortWord);
    if (m_cancelled)
        raise(abortWord);
}

void PDFCancellation::detach(int *abortWord)
{
    const std::lock_guard lock(m_mutex);
    m_words.erase(std::remove(m_words.begin(), m_words.end(), abortWord), m_words.end());
}

#pragma once

// A cancel flag shared between the thread that asks for work and the threads doing it: cancel()
// stops every render or text extraction that runs with it at its next check. Thread-safe.

#include <atomic>
#include <mutex>
#include <vector>

class PDFCancellation
{
public:
    void cancel();
    bool isCancelled() const { return m_cancelled.load(); }

    // Engine use: an abort word read by MuPDF while the work runs. Registering a word after
    // cancel() sets it at once.
    void attach(int *abortWord);
    void detach(int *abortWord);

private:
    std::atomic<bool> m_cancelled { false };
    std::mutex m_mutex;
    std::vector<int *> m_words;
};

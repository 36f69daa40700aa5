// MuPDF's lock table excludes threads from each other whether one thread works alone long enough
// to take its locks without atomic instructions or several take turns: every critical section
// finds no other inside and no increment is lost, through biases taken and taken back. Once taken
// back, no thread takes the bias again before the hold-off has passed.

#include <kit/engine/mupdf/LockTable.h>

#include <QtTest>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

constexpr int AllocationLock = 0;
constexpr int OuterLock = 1; // MuPDF takes a higher lock first, then the allocation lock

// State the locks guard, touched with plain reads and writes as MuPDF does.
struct Guarded
{
    long count[2] = { 0, 0 };
    int inside[2] = { 0, 0 };
    std::atomic<int> overlaps { 0 };
};

void enter(Guarded &state, int index)
{
    // A plain read, then a write: a second thread inside at the same time shows here.
    if (state.inside[index] != 0)
        state.overlaps.fetch_add(1, std::memory_order_relaxed);
    state.inside[index] = 1;
    // A section as long as MuPDF's, read and written in steps, so that an overlap loses counts.
    for (int step = 0; step < 8; ++step) {
        long value = state.count[index];
        asm volatile("" : "+r"(value));
        state.count[index] = value + (step == 7 ? 1 : 0);
    }
}

void leave(Guarded &state, int index)
{
    state.inside[index] = 0;
}

// One thread's work: nested sections (outer, then allocation inside) and plain ones.
void work(mu::LockTable &table, Guarded &state, int sections)
{
    for (int i = 0; i < sections; ++i) {
        const bool nested = i % 3 == 0;
        if (nested) {
            mu::LockTable::lockEntry(&table, OuterLock);
            enter(state, OuterLock);
        }
        mu::LockTable::lockEntry(&table, AllocationLock);
        enter(state, AllocationLock);
        leave(state, AllocationLock);
        mu::LockTable::unlockEntry(&table, AllocationLock);
        if (nested) {
            leave(state, OuterLock);
            mu::LockTable::unlockEntry(&table, OuterLock);
        }
    }
}

} // namespace

class LockTableTest : public QObject
{
    Q_OBJECT

private slots:
    void excludesThroughBiasAndRevocation_data();
    void excludesThroughBiasAndRevocation();
};

void LockTableTest::excludesThroughBiasAndRevocation_data()
{
    QTest::addColumn<int>("biasAfter");
    QTest::addColumn<int>("holdOffMs");
    QTest::addColumn<int>("joiningThreads");
    QTest::addColumn<int>("rounds");

    // A thread works alone long enough to own the table, then others join it and take it back.
    QTest::newRow("one joins") << mu::LockTable::BiasAfter << 0 << 1 << 6;
    QTest::newRow("three join") << mu::LockTable::BiasAfter << 0 << 3 << 4;
    // A bias after a few locks in a row changes hands all the time among threads taking turns.
    QTest::newRow("bias changing hands") << 40 << 0 << 3 << 6;
    // After the first revocation, the thread working alone again keeps to the atomic words.
    QTest::newRow("held off") << 40 << 3600 * 1000 << 3 << 3;
}

void LockTableTest::excludesThroughBiasAndRevocation()
{
    QFETCH(int, biasAfter);
    QFETCH(int, holdOffMs);
    QFETCH(int, joiningThreads);
    QFETCH(int, rounds);

    constexpr int SoloSections = 3 * mu::LockTable::BiasAfter / 2;
    constexpr int SharedSections = 20000;
    mu::LockTable table(biasAfter, std::chrono::milliseconds(holdOffMs));
    Guarded state;
    long expected = 0;
    long expectedOuter = 0;
    auto outerOf = [](int sections) { return long((sections + 2) / 3); };
    for (int round = 0; round < rounds; ++round) {
        std::atomic<bool> joined { false };
        bool ownedAlone = false;
        std::thread first([&] {
            work(table, state, SoloSections);
            ownedAlone = table.hasOwner();
            joined = true;
            // Until a joining thread has taken the bias back (an owner that ends gives it up
            // without a revocation).
            while (table.hasOwner())
                std::this_thread::yield();
            work(table, state, SharedSections);
        });
        std::vector<std::thread> others;
        for (int t = 0; t < joiningThreads; ++t) {
            others.emplace_back([&] {
                while (!joined.load())
                    std::this_thread::yield();
                work(table, state, SharedSections);
            });
        }
        first.join();
        for (auto &other : others)
            other.join();
        QCOMPARE(ownedAlone, table.mayBias() && (round == 0 || holdOffMs == 0));
        expected += SoloSections + long(joiningThreads + 1) * SharedSections;
        expectedOuter += outerOf(SoloSections) + (joiningThreads + 1) * outerOf(SharedSections);
    }

    // Every thread that owned the table gave it up as it ended.
    QVERIFY(!table.hasOwner());
    QCOMPARE(state.overlaps.load(), 0);
    QCOMPARE(state.count[AllocationLock], expected);
    QCOMPARE(state.count[OuterLock], expectedOuter);
    QCOMPARE(state.inside[AllocationLock] + state.inside[OuterLock], 0);
}

QTEST_MAIN(LockTableTest)
#include "LockTableTest.moc"

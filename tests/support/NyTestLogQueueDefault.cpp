// Linked into every test program: the library's logger in a test process writes into a private
// queue of its own, never into the machine-wide one; the queue is removed when the test program
// exits (forked children leave with _exit and do not remove it); queues left by killed test
// programs are removed at the start of the next one.
#include "support/NyTestLogQueue.h"

namespace {

class CNyTestDefaultLogQueue {
public:
    CNyTestDefaultLogQueue() : m_queue(16) {
        CNyTestLogQueue::RemoveOrphans();
        m_queue.MakeDefault();
    }

private:
    CNyTestLogQueue m_queue;
};

CNyTestDefaultLogQueue m_defaultLogQueue;

}  // namespace

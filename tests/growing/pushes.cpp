#include "tests/growing/pushes.h"

#include "tests/support/qt_literals.h"

#include <chrono>
#include <thread>

namespace growing {

using namespace test_support::literals;

Pushes::Pushes(interfaces::IDatabaseFactory& factory, const QJsonObject& settings, Copy copy,
               int firstDevice)
    : m_copy(copy), m_firstDevice(firstDevice),
      m_states(factory.CreateDriverStateInst(settings, nullptr)) {
    m_states->SetPrefix("grow"_q);
}

QString Pushes::name() const {
    return isDurable() ? "states with a durable copy"_q : "states in Redis alone"_q;
}

void Pushes::save(int call) {
    const int device = deviceOf(call);
    m_states->SetValue(device, "call"_q, call);
    m_states->Push(device, isDurable());
}

void Pushes::note(int call, bool acknowledged) {
    if (acknowledged) {
        m_acknowledged.push_back(call);
    } else {
        // As a host does, which leaves the servers the time to agree on another primary.
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace growing

// Handing events to the one who listens.
#include <utility>

#include "http.h"

namespace RecView {

void Events::publish(const std::string& name, const std::string& json)
{
    const std::lock_guard lock(m_mutex);
    if (m_listener) {
        m_listener(name, json);
    }
}

void Events::listen(Listener listener)
{
    const std::lock_guard lock(m_mutex);
    m_listener = std::move(listener);
}

}  // namespace RecView

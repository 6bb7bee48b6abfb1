// Responses that are errors, and handing events to the one who listens.
#include "http.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace RecView {

Response errorResponse(int status, const std::string& sentence)
{
    Response response;
    response.status = status;
    response.body = nlohmann::json{{"error", sentence}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    return response;
}

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

// The system's clock in microseconds, and the replacement that a host sets.
#include <vkbase/quonos.h>

#include <chrono>

namespace {

class SystemServices : public IQuonOS {
public:
    [[nodiscard]] unsigned long long CurrentTime() const override
    {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
        return microseconds < 0 ? 0 : static_cast<unsigned long long>(microseconds);
    }
};

IQuonOS* g_replacement = nullptr;

}  // namespace

IQuonOS::~IQuonOS() = default;

IQuonOS* QuonOS::Create()
{
    static SystemServices system;
    return g_replacement != nullptr ? g_replacement : &system;
}

void QuonOS::Replace(IQuonOS* replacement)
{
    g_replacement = replacement;
}

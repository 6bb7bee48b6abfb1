// Preloaded into SoapySDRServer, which ends where no Avahi runs: an Avahi that knows nobody, so that it serves who
// knows its address.

namespace {

char somebody = 0;

}  // namespace

extern "C" {

void* avahi_client_new(const void* /*poll*/, int /*flags*/, void* /*callback*/, void* /*user*/, int* error)
{
    if (error != nullptr) {
        *error = 0;
    }
    return &somebody;
}

void avahi_client_free(void* /*client*/)
{
}

int avahi_client_errno(void* /*client*/)
{
    return 0;
}

int avahi_client_get_state(void* /*client*/)
{
    constexpr int Running = 2;
    return Running;
}

const char* avahi_client_get_version_string(void* /*client*/)
{
    return "none";
}

const char* avahi_client_get_host_name(void* /*client*/)
{
    return "localhost";
}

const char* avahi_client_get_host_name_fqdn(void* /*client*/)
{
    return "localhost";
}

const char* avahi_client_get_domain_name(void* /*client*/)
{
    return "local";
}

void* avahi_entry_group_new(void* /*client*/, void* /*callback*/, void* /*user*/)
{
    return &somebody;
}

int avahi_entry_group_add_service_strlst(void* /*group*/, ...)
{
    return 0;
}

int avahi_entry_group_commit(void* /*group*/)
{
    return 0;
}

int avahi_entry_group_free(void* /*group*/)
{
    return 0;
}

void* avahi_entry_group_get_client(void* /*group*/)
{
    return &somebody;
}

}  // extern "C"

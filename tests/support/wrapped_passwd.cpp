// A user whom the password database doesn't know, while RBK_TEST_NOBODY is set. Linked with --wrap=getpwuid_r.
#include <pwd.h>

#include <cstddef>
#include <cstdlib>

extern "C" int __real_getpwuid_r(uid_t user, passwd* entry, char* room, std::size_t size, passwd** found);

extern "C" int __wrap_getpwuid_r(uid_t user, passwd* entry, char* room, std::size_t size, passwd** found)
{
    if (std::getenv("RBK_TEST_NOBODY") == nullptr) return __real_getpwuid_r(user, entry, room, size, found);
    *found = nullptr;
    return 0;
}

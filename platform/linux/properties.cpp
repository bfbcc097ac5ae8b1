// The device's properties on a host: the store's files, as the library's two operations show them.
#include "cutils/properties.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/linux/environment.h"
#include "platform/linux/property_store.h"

using rbk::platform::PropertyStore;

int property_get(const char* key, char* value, const char* default_value)
{
    const PropertyStore::Reading reading = PropertyStore::of_home().get(key != nullptr ? key : "");
    if (!reading.problem.empty()) rbk::platform::complain(reading.problem);
    std::string text = reading.value.value_or("");
    if (text.empty() && default_value != nullptr) text = default_value;
    const std::size_t length = std::min<std::size_t>(text.size(), PROPERTY_VALUE_MAX - 1);
    std::memcpy(value, text.data(), length);
    value[length] = 0;
    return static_cast<int>(length);
}

int property_set(const char* key, const char* value)
{
    const std::string problem = PropertyStore::of_home().set(key != nullptr ? key : "", value != nullptr ? value : "");
    if (problem.empty()) return 0;
    rbk::platform::complain(problem);
    return -1;
}

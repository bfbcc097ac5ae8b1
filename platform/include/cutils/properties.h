/* The device's properties: small texts known by name, shared by all processes. */
#ifndef CUTILS_PROPERTIES_H
#define CUTILS_PROPERTIES_H

#ifdef __cplusplus
extern "C" {
#endif

#define PROPERTY_VALUE_MAX 256 /* room for any value and its terminator, bytes */

/* Reads a property.
 *   key            its name
 *   value          receives the value or the default, terminated; at least PROPERTY_VALUE_MAX bytes
 *   default_value  taken when the property is absent or empty; null for none. A default that is too long for the
 *                  room is cut
 * Result: the length of what stands in `value` now, 0 when that is empty.
 * Threads: any. A value that another process has written is seen by the next call. */
int property_get(const char *key, char *value, const char *default_value);

/* Writes a property.
 *   key    its name; `persist.` and `ro.` names survive a boot, and a `ro.` name can be written once
 *   value  its text, shorter than PROPERTY_VALUE_MAX bytes; null writes an empty value
 * Result: 0 written, negative when the name or the value is refused or can't be stored; what stood there then stays.
 * Threads: any. */
int property_set(const char *key, const char *value);

#ifdef __cplusplus
}
#endif
#endif

/* Messages, identity, properties, workers, waits, device states and memory.
 *
 * Nothing here takes a lock: masks and flags are relaxed atomics, set once at start or by the command that runs. The
 * identity is plain; who has several threads fills it before they start. */
#include "velmor_utils_cmn.h"

#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#include "cutils/properties.h"
#include "qti_logger.h"

#define INSTANCE_OF_SHELL 255      // prints no name of its own
#define INSTANCE_NAMED    168      // prints the process's name
#define PROPERTY_LEN_MAX  92       // characters of a value that is written
#define MASK_DEFAULT      "65535"  // 0xffff: every level

/* The last component of a path; the whole text, and so `path` itself, when it holds no slash. */
static const char *behind_last_slash(const char *path)
{
    const char *slash = strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

// ---- Messages ----

std::atomic<uint32_t> g_velmor_logcat_print_mask{0xffff};
std::atomic<uint32_t> g_velmor_shell_print_mask{0xffff};
std::atomic<uint8_t>  g_logcat_mask_merged;
std::atomic<uint8_t>  g_shell_mask_merged;

uint32_t g_ril_process_instance_id = INSTANCE_OF_SHELL;

uint32_t velmor_get_ril_process_instance_id()
{
    return g_ril_process_instance_id;
}

const char *velmor_log_instance_text()
{
    static thread_local char text[sizeof g_pid_info.p_name + 2];
    const uint32_t           instance_id = g_ril_process_instance_id;
    if (instance_id == INSTANCE_OF_SHELL) return "";
    if (instance_id == INSTANCE_NAMED) {
        snprintf(text, sizeof text, "[%s]", velmor_get_current_pid_name());
    } else {
        snprintf(text, sizeof text, "SUB[%d]", static_cast<int>(instance_id));
    }
    return text;
}

void velmor_utils_syslog_dbg(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_DEBUG, format, arguments);
    va_end(arguments);
}

void velmor_utils_syslog_err(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vsyslog(LOG_ERR, format, arguments);
    va_end(arguments);
}

/* The number of a mask's property: 0, and with it a closed channel, when it holds none. */
static uint32_t mask_property(const char *name)
{
    char value[VELMOR_PROPERTY_SIZE] = {};
    property_get(name, value, MASK_DEFAULT);
    return static_cast<uint32_t>(atoi(value));
}

// The merged flag goes first, so that what is reported from within doesn't come back here. Another thread may then meet
// the mask as it was, or merge a second time: both are accepted, an AND with the same number changes nothing.
void velmor_merge_logcat_print_mask()
{
    g_logcat_mask_merged.store(1, std::memory_order_relaxed);
    const uint32_t merge_mask = mask_property("persist.vendor.radio.adb_log_velmor");
    velmor_utils_syslog_dbg("merge, old velmor_hal_set_logcat_print_mask 0x%x, merge_mask 0x%x",
                            g_velmor_logcat_print_mask.load(std::memory_order_relaxed), merge_mask);
    const uint32_t new_mask = g_velmor_logcat_print_mask.fetch_and(merge_mask, std::memory_order_relaxed) & merge_mask;
    velmor_utils_syslog_dbg("new velmor_hal_set_logcat_print_mask 0x%x", new_mask);
    if (new_mask != 0) {
        velmor_utils_syslog_dbg("logcat print is started, g_velmor_logcat_print_mask 0x%x", new_mask);
    } else {
        velmor_utils_syslog_dbg("logcat print is stoped, g_velmor_logcat_print_mask 0x%x", new_mask);
    }
}

void velmor_merge_shell_print_mask()
{
    g_shell_mask_merged.store(1, std::memory_order_relaxed);
    const uint32_t merge_mask = mask_property("persist.vendor.radio.adb_log_shell");
    velmor_utils_syslog_dbg("merge, old g_velmor_shell_print_mask 0x%x, merge_mask 0x%x",
                            g_velmor_shell_print_mask.load(std::memory_order_relaxed), merge_mask);
    const uint32_t new_mask = g_velmor_shell_print_mask.fetch_and(merge_mask, std::memory_order_relaxed) & merge_mask;
    velmor_utils_syslog_dbg("new g_velmor_shell_print_mask 0x%x", new_mask);
    if (new_mask != 0) {
        velmor_utils_syslog_dbg("shell print is started, g_velmor_shell_print_mask 0x%x", new_mask);
    } else {
        velmor_utils_syslog_dbg("shell print is stoped, g_velmor_shell_print_mask 0x%x", new_mask);
    }
}

void velmor_hal_set_shell_print_mask(uint32_t dst_mask)
{
    const uint32_t old_mask = g_velmor_shell_print_mask.exchange(dst_mask, std::memory_order_relaxed);
    velmor_utils_syslog_dbg("set, old g_velmor_shell_print_mask 0x%x, dst_mask 0x%x", old_mask, dst_mask);
    velmor_utils_syslog_dbg("new g_velmor_shell_print_mask 0x%x", dst_mask);
}

void velmor_hal_remove_shell_print_mask(uint32_t rm_mask)
{
    const uint32_t old_mask = g_velmor_shell_print_mask.fetch_and(~rm_mask, std::memory_order_relaxed);
    velmor_utils_syslog_dbg("remove, old g_velmor_shell_print_mask 0x%x, rm_mask 0x%x", old_mask, rm_mask);
    velmor_utils_syslog_dbg("new g_velmor_shell_print_mask 0x%x", old_mask & ~rm_mask);
}

void velmor_hal_close_print()
{
    g_velmor_logcat_print_mask.store(0, std::memory_order_relaxed);
    g_velmor_shell_print_mask.store(0, std::memory_order_relaxed);
}

// ---- Who this process is ----

velmor_pid_info g_pid_info;

// Each is set before its attempt, so that a failed one isn't repeated.
static std::atomic<uint8_t> g_pid_info_done;
static std::atomic<uint8_t> g_pid_name_done;

#define CMDLINE_SIZE 256

/* The start of a command line. Its words end in zero bytes, so that what is read is, as text, the first word alone.
 * Result: whether anything was read. */
static bool cmdline_read(FILE *fp, char (&buf)[CMDLINE_SIZE])
{
    memset(buf, 0, sizeof buf);
    const bool got = fgets(buf, CMDLINE_SIZE - 1, fp) != nullptr;
    buf[CMDLINE_SIZE - 1] = 0;
    return got;
}

void velmor_get_current_pid_info(velmor_pid_info *p_pid_info)
{
    LOG(4, "function entry ------------->");
    if (p_pid_info == nullptr) {
        LOG(1, "p_pid_info is NULL");
        LOG(4, "function exit <-------------");
        return;
    }
    memset(p_pid_info, 0, sizeof *p_pid_info);
    p_pid_info->p_id = getpid();

    char proc_pid_path[64];
    snprintf(proc_pid_path, sizeof proc_pid_path, "/proc/%d/cmdline", p_pid_info->p_id);
    LOG(4, "proc_pid_path: %s", proc_pid_path);
    FILE *fp = fopen(proc_pid_path, "r");
    if (fp == nullptr) {
        LOG(1, "fopen fail");
    } else {
        char proc_pid_buf[CMDLINE_SIZE];
        if (!cmdline_read(fp, proc_pid_buf)) {
            LOG(1, "fgets fail");
        } else {
            LOG(4, "proc_pid_buf: %s", proc_pid_buf);
            const char *str_pid_name = behind_last_slash(proc_pid_buf);
            if (str_pid_name == proc_pid_buf) LOG(4, "proc_pid_buf should be name");
            snprintf(p_pid_info->p_name, sizeof p_pid_info->p_name, "%s", str_pid_name);
            LOG(4, "str_pid_name: %s", str_pid_name);
            LOG(4, "p_pid_info->p_name: %s", p_pid_info->p_name);
        }
        LOG(4, "close fp");
        fclose(fp);
    }

    LOG(4, "p_id: %d, p_name: %s", p_pid_info->p_id, p_pid_info->p_name);
    LOG(4, "function exit <-------------");
}

// LOG calls this for its own prefix, so nothing here may go through LOG.
const char *velmor_get_current_pid_name()
{
    if (g_pid_name_done.exchange(1, std::memory_order_relaxed) != 0) return g_pid_info.p_name;

    char proc_pid_path[64];
    char proc_pid_buf[CMDLINE_SIZE];
    snprintf(proc_pid_path, sizeof proc_pid_path, "/proc/%d/cmdline", static_cast<int>(getpid()));
    FILE *fp = fopen(proc_pid_path, "r");
    if (fp == nullptr) {
        velmor_utils_syslog_err("fopen fail");
        return g_pid_info.p_name;
    }
    const bool got = cmdline_read(fp, proc_pid_buf);
    fclose(fp);
    if (!got) {
        velmor_utils_syslog_err("velmor_get_current_pid_name, fgets fail");
        return g_pid_info.p_name;
    }
    velmor_utils_syslog_dbg("velmor_get_current_pid_name, proc_pid_buf = %s", proc_pid_buf);
    const char *str_pid_name = behind_last_slash(proc_pid_buf);
    if (str_pid_name == proc_pid_buf)
        velmor_utils_syslog_err("velmor_get_current_pid_name, proc_pid_buf should be name");
    snprintf(g_pid_info.p_name, sizeof g_pid_info.p_name, "%s", str_pid_name);
    velmor_utils_syslog_dbg("velmor_get_current_pid_name, str_pid_name: %s", str_pid_name);
    velmor_utils_syslog_dbg("velmor_get_current_pid_name, g_pid_info.p_name = %s", g_pid_info.p_name);
    return g_pid_info.p_name;
}

static void pid_info_fill_once()
{
    if (g_pid_info_done.exchange(1, std::memory_order_relaxed) == 0) velmor_get_current_pid_info(&g_pid_info);
}

int32_t velmor_utils_get_pid_number()
{
    pid_info_fill_once();
    return g_pid_info.p_id;
}

const char *velmor_utils_get_pid_name()
{
    pid_info_fill_once();
    return g_pid_info.p_name;
}

// ---- Properties ----

#define PRINT_PROP_UNREAD 2

static std::atomic<int32_t> g_print_prop_state{PRINT_PROP_UNREAD};  // then 1 values are traced, 0 they are not

/* Whether values are traced; reads its property the first time. */
static bool print_prop_is_on()
{
    if (g_print_prop_state.load(std::memory_order_relaxed) == PRINT_PROP_UNREAD) {
        char value[VELMOR_PROPERTY_SIZE] = {};
        property_get("persist.vendor.radio.print_prop", value, "1");
        const bool on = strcmp(value, "1") == 0;
        g_print_prop_state.store(on, std::memory_order_relaxed);
        if (on) {
            velmor_utils_syslog_dbg("prop print is started");
        } else {
            velmor_utils_syslog_dbg("prop print is stoped");
        }
    }
    return g_print_prop_state.load(std::memory_order_relaxed) == 1;
}

/* Reads a property into a buffer that ends in a zero byte whatever the platform does; the name is cut to its room. */
static void property_read(const char *name, char (&value)[VELMOR_PROPERTY_SIZE], const char *default_value)
{
    char cut_name[VELMOR_PROPERTY_SIZE];
    snprintf(cut_name, sizeof cut_name, "%s", name);
    memset(value, 0, sizeof value);
    property_get(cut_name, value, default_value);
    value[VELMOR_PROPERTY_SIZE - 1] = 0;
}

void velmor_get_property_value(const char *name, char *value, const char *default_value)
{
    if (name == nullptr) {
        LOG(1, "property_name is null");
        return;
    }
    if (value == nullptr) {
        LOG(1, "property_value is null");
        return;
    }
    if (default_value == nullptr) {
        LOG(1, "default_property_value is null");
        return;
    }
    char text[VELMOR_PROPERTY_SIZE];
    property_read(name, text, default_value);
    memcpy(value, text, strlen(text) + 1);
    if (print_prop_is_on()) LOG(4, "%s: %s", name, value);
}

void velmor_print_property_value(const char *name)
{
    if (!print_prop_is_on()) return;
    if (name == nullptr) {
        LOG(1, "property_name is null");
        return;
    }
    char value[VELMOR_PROPERTY_SIZE];
    property_read(name, value, "null_val");
    LOG(4, "%s: %s", name, value);
}

void velmor_set_property_value(const char *name, const char *value)
{
    if (name == nullptr) {
        LOG(1, "property_name is null");
        return;
    }
    if (value == nullptr) {
        LOG(1, "property_value is null");
        return;
    }
    const size_t value_len = strlen(value);
    if (value_len > PROPERTY_LEN_MAX) {
        LOG(1, "property_value len(%u) is out of range(%d)", static_cast<unsigned>(value_len), PROPERTY_LEN_MAX);
        return;
    }
    char cut_name[VELMOR_PROPERTY_SIZE];
    snprintf(cut_name, sizeof cut_name, "%s", name);
    property_set(cut_name, value);  // what stands there now, the trace shows
    velmor_print_property_value(name);
}

void velmor_set_property_value_to_int(const char *name, int32_t number)
{
    char value[16];
    snprintf(value, sizeof value, "%d", number);
    velmor_set_property_value(name, value);
}

int32_t velmor_get_property_value_from_int(const char *name, int32_t *number_out, int32_t default_number)
{
    char default_value[16];
    char value[VELMOR_PROPERTY_SIZE] = {};
    snprintf(default_value, sizeof default_value, "%d", default_number);
    velmor_get_property_value(name, value, default_value);
    const int32_t number = atoi(value);
    if (number_out != nullptr) *number_out = number;
    return number;
}

int32_t velmor_get_default_data_sub()
{
    char value[VELMOR_PROPERTY_SIZE] = {};
    velmor_get_property_value("persist.radio.default_data_sub", value, "0");
    return atoi(value);
}

// ---- Workers and waits ----

pthread_t velmor_create_pthread(const char *name, void *(*proc)(void *), void *argument)
{
    LOG(4, "function entry ------------->");
    LOG(4, "pthread[%s] will be created", name != nullptr ? name : "Unkown name");

    pthread_t handle = 0;
    if (proc == nullptr) {
        LOG(1, "p_thread_proc_cb is NULL, do nothing");
    } else {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
        pthread_t started;
        const int result = pthread_create(&started, &attributes, proc, argument);
        pthread_attr_destroy(&attributes);
        if (result == 0) handle = started;
        LOG(4, "result = %d", result);
    }
    LOG(4, "function exit <-------------");
    return handle;
}

int32_t velmor_modem_wait_s(int32_t wait_s)
{
    if (wait_s < 0) {
        char value[VELMOR_PROPERTY_SIZE] = {};
        velmor_get_property_value("persist.radio.modem_wait_s", value, "3");
        wait_s = atoi(value);
    }
    LOG(4, "wait_s = %d", wait_s);
    if (wait_s < 1) {
        LOG(4, "will not wait");
    } else {
        LOG(4, "wait-start(%ds) ...", wait_s);
        sleep(static_cast<unsigned>(wait_s));
        LOG(4, "wait-end(%ds)", wait_s);
    }
    return wait_s;
}

// ---- Bytes to text ----

int32_t velmor_get_hex_str(char *hex_str, int32_t len_max, const uint8_t *ptr_data, int32_t data_len)
{
    if (hex_str == nullptr) {
        LOG(1, "hex_str is null");
        return 0;
    }
    if (len_max <= 4) {
        LOG(1, "len_max is invalid");
        return 0;
    }
    if (ptr_data == nullptr) {
        LOG(1, "ptr_data is null");
        return 0;
    }
    memset(hex_str, 0, static_cast<size_t>(len_max));
    int32_t text_len = 0;
    for (int32_t i = 0; i < data_len && text_len + 4 < len_max; i++) {
        text_len += snprintf(hex_str + text_len, 4, " %02X", ptr_data[i]);
    }
    hex_str[len_max - 1] = 0;
    return 1;
}

void velmor_byte_to_hex(const uint8_t *data, uint32_t len, char *out)
{
    static const char digits[] = "0123456789abcdef";
    if (data == nullptr) return;
    for (uint32_t i = 0; i < len; i++) {
        *out++ = digits[data[i] >> 4];
        *out++ = digits[data[i] & 0xf];
    }
}

// ---- Device states ----

static const char *const g_device_states[] = {
    "WIFI_STATE",
    "HOTSPOT_STATE",
    "MODEM_STATE",
    "SAR_SENSOR_STATE",
    "HALL_SENSOR_STATE",
    "AUDIO_RECEIVER_STATE",
    "MCC_STATE",
    "BLUETOOTH_PAN_STATE",
    "BLUETOOTH_STATE",
    "SAR_SENSOR2_STATE",
    "CABLE_STATE",
    "USB_STATE",
    "USE_CASE_TEST",
    "RADIOPOWER_STATE",
    "SIMCARD_STATE",
    "SMART_TX_STATE",
    "WHITE_LIST_STATE",
    "GPD_SENSOR_STATE",
    "GRAVITY_Y_AXES_STATE",
    "NTN_RADIO_POWER_STATE",
    "HALL_SENSOR2_STATE",
    "SAR_SENSOR2_ONE_TYPE",
    "SAR_SENSOR3_STATE",
};
static_assert(sizeof g_device_states / sizeof g_device_states[0] == VELMOR_DEVICE_STATE_COUNT);

const char *velmor_get_device_type_string_ex(uint32_t index)
{
    static char text[201];
    if (index >= VELMOR_DEVICE_STATE_COUNT) return nullptr;
    snprintf(text, sizeof text, "[%d]%s", static_cast<int>(index), g_device_states[index]);
    return text;
}

const char *velmor_get_device_state_prop_name(uint32_t index)
{
    static char name[VELMOR_PROPERTY_SIZE];
    if (index >= VELMOR_DEVICE_STATE_COUNT) return nullptr;
    snprintf(name, sizeof name, "%s%s", "debug.device.", g_device_states[index]);
    for (char *c = name; *c != 0; c++) {
        if (*c >= 'A' && *c <= 'Z') *c += 'a' - 'A';  // not tolower: no language's rules
    }
    return name;
}

// ---- The radio daemon's logger ----

void qcril_log_failure(const char *text, const char *file, int line, const char *function)
{
    qti::ril::logger::Logger::log(LOG_ERR, "util", "[%s: %d] [%s(%ld,%ld)] %s: %s", behind_last_slash(file), line,
                                  qti::ril::logger::qcril_get_thread_name(), static_cast<long>(getpid()),
                                  static_cast<long>(syscall(SYS_gettid)), function, text);
}

// ---- Memory ----

void *qcril_malloc_adv(size_t size, const char *file, int line, const char *function)
{
    void *block = calloc(1, size);
    if (block == nullptr) {
        qcril_log_failure("Fail to allocate memory", file, line, function);
    }
    return block;
}

void qcril_free_adv(void *pointer, const char *function_name, int line)
{
    (void)function_name;
    (void)line;
    if (pointer != nullptr) free(pointer);
}

/* The unpacker is a packet, a base and a read position in it, and steps that move them. The parser is a list of steps;
 * each is a macro around a function, since a step that fails ends the parse. */
#include "modem_stats_unpk.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#define UNPK_BYTES_MAX 2000  // bound of a position, whatever the packet's length
#define PK_BYTES_MAX   700   // the packed form has the room of one statistics sample

/* State of the unpacker and of the packed form. */
int32_t               g_unpk_print_flag;
static uint32_t       g_unpk_id;             // number of the record, shown in messages
static int32_t        g_unpk_data_len;       // bound of a position, bytes
static const uint8_t *g_unpk_data_ptr;       // the packet
static int32_t        g_unpk_data_base;      // byte that positions count from
static int32_t        g_unpk_data_base_bit;  // bit that positions count from
static int32_t        g_unpk_data_cnt;       // read position, bytes from the base
static uint8_t       *g_pk_data_ptr;
static int32_t        g_pk_data_cnt;
static uint8_t        g_pk_data_buf[PK_BYTES_MAX];

/* What a packet tells of a cell. */
struct modem_stats_cell_info {
    uint32_t version;
    uint16_t mcc;
    uint8_t  mnc_num;
    uint16_t mnc;
    uint32_t tac;
    uint64_t cgi;
    uint16_t pci;
    uint16_t freq_band_ind;
    uint32_t dl_earfcn;
    uint16_t dl_bw;
    uint32_t ul_earfcn;
    uint16_t ul_bw;
    uint8_t  allow_access;
    uint8_t  scs;  // in none of the layouts
};

#define PRINT_STEP(...)                                       \
    do {                                                      \
        if (g_unpk_print_flag != 0) STATS_PRINT(__VA_ARGS__); \
    } while (0)

// ---- Values as text ----

static uint64_t value_of(const void *variable, int32_t size)
{
    uint64_t value = 0;
    memcpy(&value, variable, static_cast<size_t>(size));
    return value;
}

/* "0x" and the value's bytes, the lowest first, without the zero bytes at the end: 0 is "0x". A static text. */
static const char *hex_of(uint64_t value)
{
    static char text[2 + 16 + 1];
    int32_t     len = snprintf(text, sizeof(text), "0x");
    for (; value != 0; value >>= 8)
        len +=
            snprintf(text + len, sizeof(text) - static_cast<size_t>(len), "%02X", static_cast<unsigned>(value & 0xFF));
    return text;
}

// ---- Steps ----

static bool data_unpk(const char *name, void *variable, int32_t size)
{
    if (g_unpk_data_ptr == nullptr) {
        STATS_PRINT("DATA_UNPK, g_unpk_data_ptr is NULL, name: %s, id(0x%x)", name, g_unpk_id);
        return false;
    }
    if (g_unpk_data_base + g_unpk_data_cnt >= UNPK_BYTES_MAX) {
        STATS_PRINT("DATA_UNPK, (base + cnt)(%d) is can not >= %d for %s, id(0x%x)", g_unpk_data_base + g_unpk_data_cnt,
                    UNPK_BYTES_MAX, name, g_unpk_id);
        return false;
    }
    memcpy(variable, g_unpk_data_ptr + g_unpk_data_base + g_unpk_data_cnt, static_cast<size_t>(size));
    g_unpk_data_cnt += size;
    PRINT_STEP("    UNPK_I, name: %s, val: %lu(%s), val_size: %d, unpk_cnt: %d, data_base: %d, base_bit: %d", name,
               value_of(variable, size), hex_of(value_of(variable, size)), size, g_unpk_data_cnt, g_unpk_data_base,
               g_unpk_data_base_bit);
    return true;
}

/* Moves the base forward; positions count from there. */
static void base_with_bit(int32_t bit)
{
    g_unpk_data_base_bit += bit;
    g_unpk_data_base = g_unpk_data_base_bit / 8;
    g_unpk_data_cnt = 0;
    PRINT_STEP(
        "BASE_WITH_BIT, g_unpk_data_base_bit(%d), g_unpk_data_base(%d), g_unpk_data_cnt(%d), bit(%d), "
        "id(0x%x)",
        g_unpk_data_base_bit, g_unpk_data_base, g_unpk_data_cnt, bit, g_unpk_id);
}

/* Sets the read position to the byte that holds a bit. */
static bool unpk_set_bit(int32_t bit)
{
    const int32_t pos = (g_unpk_data_base_bit + bit) / 8 - g_unpk_data_base;
    if (pos < 0 || pos >= g_unpk_data_len) {
        STATS_PRINT("UNPK_SET_BIT, pos(%d) should be[0, %d), id(0x%x)", pos, g_unpk_data_len, g_unpk_id);
        return false;
    }
    g_unpk_data_cnt = pos;
    PRINT_STEP(
        "UNPK_SET_BIT, g_unpk_data_base_bit(%d), g_unpk_data_base(%d), g_unpk_data_cnt(%d), bit(%d), "
        "id(0x%x)",
        g_unpk_data_base_bit, g_unpk_data_base, g_unpk_data_cnt, bit, g_unpk_id);
    return true;
}

/* All bits from `low` on, `low` counted from 1 and at most 65. From the first bit on the first word is all of them. */
static uint64_t bits_from(uint64_t first, uint64_t second, int32_t low)
{
    if (low == 1) return first;
    const uint64_t from_first = low <= 64 ? first >> (low - 1) : 0;
    const uint64_t from_second = second & (~uint64_t{0} >> ((65 - low) & 63));
    return from_first | from_second * static_cast<uint64_t>(pow(2.0, 65 - low));  // to the left by 65 - low
}

/* UNPK_HIGH: drops the bits below `low`. A field that begins with the first bit has one word to come from, any other
 * has both. */
static bool unpk_high(const char *name, void *variable, int32_t size, uint64_t first, uint64_t second, int32_t low)
{
    const int32_t bits_max = low == 1 ? 64 : 128;
    const int32_t bits_min = low == 1 ? 1 : 64;
    const int32_t bit_num = bits_max + 1 - low;
    if (bit_num < bits_min || bit_num > bits_max) {
        STATS_PRINT("UNPK_HIGH, bit_num(%d) should be in [%d, %d] for %s, id(0x%x)", bit_num, bits_min, bits_max, name,
                    g_unpk_id);
        return false;
    }
    const uint64_t value = bits_from(first, second, low);
    memcpy(variable, &value, static_cast<size_t>(size));
    PRINT_STEP("UNPK_HIGH, old_val: %lu, new_val: %lu, bit_num: %d, name: %s, id(0x%x)", first,
               value_of(variable, size), bit_num, name, g_unpk_id);
    return true;
}

/* UNPK_LOW: drops the bits above the lowest `bit_num`. */
static bool unpk_low(const char *name, void *variable, int32_t size, int32_t bit_num)
{
    const int32_t width = 8 * size;
    if (bit_num < 1 || bit_num > width) {
        STATS_PRINT("UNPK_LOW, bit_num(%d) should be in [1, %d] for %s, id(0x%x)", bit_num, width, name, g_unpk_id);
        return false;
    }
    const uint64_t mask_max = ~uint64_t{0} >> (64 - width);
    const uint64_t old_value = value_of(variable, size);
    const uint64_t new_value = old_value & (mask_max >> (width - bit_num));
    memcpy(variable, &new_value, static_cast<size_t>(size));
    PRINT_STEP(
        "UNPK_LOW, old_val: %lu, new_val: %lu, bit_num: %d, mask_max(0x%lx), old_size(%d), name: %s, "
        "id(0x%x)",
        old_value, new_value, bit_num, mask_max, size, name, g_unpk_id);
    return true;
}

bool modem_stats_unpk_mid(const char *name, void *variable, int32_t size, uint64_t first, uint64_t second, int32_t low,
                          int32_t high)
{
    const int32_t bits_max = low == 1 ? 64 : 128;
    if (low < 1 || low > bits_max) {
        STATS_PRINT("UNPK_MID, low(%d) should be in [1, %d] for %s, id(0x%x)", low, bits_max, name, g_unpk_id);
        return false;
    }
    if (high < 1 || high > bits_max) {
        STATS_PRINT("UNPK_MID, high(%d) should be in [1, %d] for %s, id(0x%x)", high, bits_max, name, g_unpk_id);
        return false;
    }
    if (low > high) {
        STATS_PRINT("UNPK_MID, low(%d) should <= high(%d) for %s, id(0x%x)", low, high, name, g_unpk_id);
        return false;
    }
    if (!unpk_high(name, variable, size, first, second, low)) return false;
    if (!unpk_low(name, variable, size, high - low + 1)) return false;
    PRINT_STEP("UNPK_MID, old_val: %lu, new_val: %lu, low: %d, high: %d, name: %s, id(0x%x)", first,
               value_of(variable, size), low, high, name, g_unpk_id);
    return true;
}

/* One field: to its first byte, two words from there, and the field's bits out of them. */
static bool unpk_at(const char *name, const char *name_tmp1, const char *name_tmp2, void *variable, int32_t size,
                    int32_t bit_start, int32_t bit_num)
{
    if (!unpk_set_bit(bit_start)) return false;
    const int32_t low = g_unpk_data_base_bit - (g_unpk_data_cnt + g_unpk_data_base) * 8 + bit_start + 1;
    const int32_t high = low + bit_num - 1;
    PRINT_STEP("PRINT_CNT, base_bit: %d, base_byte: %d, data_cnt: %d, low: %d, high: %d, param: %d, name: %s",
               g_unpk_data_base_bit, g_unpk_data_base, g_unpk_data_cnt, low, high, bit_start, name);

    uint64_t first = 0;
    uint64_t second = 0;
    if (!data_unpk(name_tmp1, &first, sizeof(first)) || !data_unpk(name_tmp2, &second, sizeof(second))) return false;
    if (!modem_stats_unpk_mid(name, variable, size, first, second, low, high)) return false;
    PRINT_STEP("    UNPK_AT, name: %s, val: %lu(%s), low: %d, high: %d, bit_start: %d, bit_num: %d", name,
               value_of(variable, size), hex_of(value_of(variable, size)), low, high, bit_start, bit_num);
    return true;
}

static bool modem_stats_data_pk(const char *name, const void *variable, int32_t size)
{
    if (g_pk_data_ptr == nullptr) {
        STATS_PRINT("MODEM_STATS_DATA_PK, g_pk_data_ptr is NULL, name: %s, id(0x%x)", name, g_unpk_id);
        return false;
    }
    if (g_pk_data_cnt >= PK_BYTES_MAX) {
        STATS_PRINT("Cur(%d) reached max(%d), for %s, id(0x%x)", g_pk_data_cnt, PK_BYTES_MAX, name, g_unpk_id);
        return false;
    }
    memcpy(g_pk_data_ptr + g_pk_data_cnt, variable, static_cast<size_t>(size));
    g_pk_data_cnt += size;
    return true;
}

// ---- The parser ----

#define DATA_UNPK(name, variable, size)                  \
    do {                                                 \
        if (!data_unpk(name, &(variable), size)) return; \
    } while (0)
#define BASE_WITH_BIT(bit) base_with_bit(bit)
#define UNPK_AT(name, variable, size, bit_start, bit_num)                                              \
    do {                                                                                               \
        if (!unpk_at(name, name "_tmp1", name "_tmp2", &(variable), size, bit_start, bit_num)) return; \
    } while (0)
#define MODEM_STATS_DATA_PK(name, variable, size)                  \
    do {                                                           \
        if (!modem_stats_data_pk(name, &(variable), size)) return; \
    } while (0)

/* Bit positions of a layout, from the end of the packet's first word. */
struct cell_layout {
    int32_t pci, dl_earfcn, ul_earfcn, dl_bw, ul_bw, cgi, mcc, mnc_num, mnc, allow_access, tac, freq_band_ind;
};
// clang-format off
constexpr cell_layout LAYOUT_4       = { 0,  16,  48,  80,  96, 112, 176, 192, 200, 216, 224, 256};
constexpr cell_layout LAYOUT_0x30000 = { 0,  80, 112, 144, 160, 176, 240, 256, 264, 280, 288, 320};
constexpr cell_layout LAYOUT_0x30001 = {10,  90, 122, 154, 170, 186, 250, 266, 274, 290, 298, 330};
constexpr cell_layout LAYOUT_0x30002 = {24, 104, 136, 168, 184, 200, 264, 280, 288, 304, 312, 344};
// clang-format on

/* The fields of one layout, each position a constant where it is used. */
#define UNPK_CELL_INFO(info, layout)                                           \
    UNPK_AT("mcc", info.mcc, 2, layout.mcc, 16);                               \
    UNPK_AT("mnc_num", info.mnc_num, 1, layout.mnc_num, 8);                    \
    UNPK_AT("mnc", info.mnc, 2, layout.mnc, 16);                               \
    UNPK_AT("tac", info.tac, 4, layout.tac, 32);                               \
    UNPK_AT("cgi", info.cgi, 8, layout.cgi, 64);                               \
    UNPK_AT("pci", info.pci, 2, layout.pci, 16);                               \
    UNPK_AT("freq_band_ind", info.freq_band_ind, 2, layout.freq_band_ind, 16); \
    UNPK_AT("dl_earfcn", info.dl_earfcn, 4, layout.dl_earfcn, 32);             \
    UNPK_AT("dl_bw", info.dl_bw, 2, layout.dl_bw, 16);                         \
    UNPK_AT("ul_earfcn", info.ul_earfcn, 4, layout.ul_earfcn, 32);             \
    UNPK_AT("ul_bw", info.ul_bw, 2, layout.ul_bw, 16);                         \
    UNPK_AT("allow_access", info.allow_access, 1, layout.allow_access, 8)

/* The form of a statistics sample. The count of MNC digits has no place in it, and nothing reads it further. */
static void pack_cell_info(const modem_stats_cell_info &info)
{
    memset(g_pk_data_buf, 0, sizeof(g_pk_data_buf));
    g_pk_data_ptr = g_pk_data_buf;
    g_pk_data_cnt = 0;
    MODEM_STATS_DATA_PK("version", info.version, 4);
    MODEM_STATS_DATA_PK("mcc", info.mcc, 2);
    MODEM_STATS_DATA_PK("mnc", info.mnc, 2);
    MODEM_STATS_DATA_PK("tac", info.tac, 4);
    MODEM_STATS_DATA_PK("cgi", info.cgi, 8);
    MODEM_STATS_DATA_PK("pci", info.pci, 2);
    MODEM_STATS_DATA_PK("freq_band_ind", info.freq_band_ind, 2);
    MODEM_STATS_DATA_PK("dl_earfcn", info.dl_earfcn, 4);
    MODEM_STATS_DATA_PK("dl_bw", info.dl_bw, 2);
    MODEM_STATS_DATA_PK("ul_earfcn", info.ul_earfcn, 4);
    MODEM_STATS_DATA_PK("ul_bw", info.ul_bw, 2);
    MODEM_STATS_DATA_PK("allow_access", info.allow_access, 1);
    MODEM_STATS_DATA_PK("scs", info.scs, 1);
}

static void modem_stats_parse_xxxx_diag_xxxx()
{
    modem_stats_cell_info info = {};
    DATA_UNPK("version", info.version, 4);
    BASE_WITH_BIT(32);
    switch (info.version) {
    case 4: UNPK_CELL_INFO(info, LAYOUT_4); break;
    case 0x30000: UNPK_CELL_INFO(info, LAYOUT_0x30000); break;
    case 0x30001: UNPK_CELL_INFO(info, LAYOUT_0x30001); break;
    case 0x30002: UNPK_CELL_INFO(info, LAYOUT_0x30002); break;
    default: return;  // an unknown layout is left alone without a word
    }

    STATS_PRINT("version = %d, mcc = %d, mnc_num %d, mnc %d, tac %d, cgi %lu, pci %d", info.version, info.mcc,
                info.mnc_num, info.mnc, info.tac, info.cgi, info.pci);
    STATS_PRINT("freq_band_ind = %d, dl_earfcn = %d, dl_bw %d, ul_earfcn %d, ul_bw %d, allow_access %d, scs %d",
                info.freq_band_ind, info.dl_earfcn, info.dl_bw, info.ul_earfcn, info.ul_bw, info.allow_access,
                info.scs);
    pack_cell_info(info);
}

void velmor_test_modem_stats_parsing_process_do(uint8_t length, const uint8_t *payload)
{
    const int32_t data_len = length;

    g_unpk_id = 0x123;
    g_unpk_data_len = UNPK_BYTES_MAX;
    g_unpk_data_ptr = payload;
    g_unpk_data_base = 0;
    g_unpk_data_base_bit = 0;
    g_unpk_data_cnt = 0;
    if (payload == nullptr) {
        STATS_PRINT("UNPK_START, payload is NULL, id(0x%x)", g_unpk_id);
        return;
    }
    if (data_len < 0) {  // never, of a length without a sign
        STATS_PRINT("UNPK_START, data_len(%d) should >= 0, id(0x%x)", data_len, g_unpk_id);
        return;
    }
    modem_stats_parse_xxxx_diag_xxxx();
}

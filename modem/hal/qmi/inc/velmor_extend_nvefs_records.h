/* The records of NV items and EFS files, as they stand in the data of an envelope: little-endian, in memory as on the wire.
 * Who asks for them is velmor_extend_nvefs; who reads traces knows them too. */
#ifndef VELMOR_EXTEND_NVEFS_RECORDS_H
#define VELMOR_EXTEND_NVEFS_RECORDS_H

#include <stddef.h>
#include <stdint.h>

#include "velmor_extend_nvefs.h"

constexpr uint32_t NV_LEGACY_DATA_MAX = 412;

enum nvefs_op : uint8_t { NV_READ = 1, NV_WRITE = 2, NV_DELETE = 3, EFS_READ = 4, EFS_WRITE = 5, EFS_DELETE = 6 };

/* Records of REQUEST_ID_EFS, little-endian. */
struct nvefs_req {
    nvefs_op op;
    uint8_t  sub_id;
    uint16_t nv_id;     // EFS write: instance
    uint8_t  path_len;  // bytes in path
    char     path[103];
    uint32_t data_len_all;   // of a write, bytes
    uint32_t data_len_send;  // of this written chunk, bytes
    uint32_t data_len_cur;   // bytes moved before this chunk, which is its offset in the file
    uint8_t  data[NVEFS_DATA_MAX];
};
struct nvefs_rsp {
    uint32_t reserved_0;
    uint32_t data_len_all;   // of the item or the file, bytes; foreign
    uint32_t data_len_send;  // of this read chunk, bytes; foreign
    uint32_t reserved_12;
    int32_t  result;  // 0; EFS write: 0 or above is the instance for the next chunk
    uint8_t  data[NVEFS_DATA_MAX];
};
static_assert(sizeof(nvefs_req) == 544 && offsetof(nvefs_req, data_len_all) == 108 && offsetof(nvefs_req, data) == 120);
static_assert(sizeof(nvefs_rsp) == 444 && offsetof(nvefs_rsp, data) == 20);

/* Records of REQUEST_ID_NV_LEGACY. */
struct nv_legacy_req {
    uint32_t op;  // 1
    uint32_t nv_id;
    uint32_t sub_id;
    uint8_t  reserved[416];
};
struct nv_legacy_rsp {
    uint32_t reserved_0;
    int32_t  result;
    uint32_t reserved_8[2];
    uint32_t data_len;  // of the item, bytes; foreign
    uint8_t  data[NV_LEGACY_DATA_MAX];
};
static_assert(sizeof(nv_legacy_req) == 428 && sizeof(nv_legacy_rsp) == 432);

#endif

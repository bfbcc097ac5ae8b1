# Group 11: trouble for the modem, and print switches. The shell's own self-tests (7, 8, 9) aren't sessions.

== A restart is counted before it is asked for
$ inside velmor_extend_cmn.cpp velmor_utils_cmn.cpp rbk 11 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
4 velmor_extend_cmn.cpp velmor_save_modem_ssr_count: function entry ------------->
4 ^ flag = 0x00001000
4 velmor_utils_cmn.cpp velmor_get_property_value: persist.radio.ssr_count_0x00001000: 0
4 velmor_extend_cmn.cpp velmor_update_modem_ssr_count: ssr_type = 0x00001000, ssr_count_old = 0
4 velmor_utils_cmn.cpp velmor_print_property_value: persist.radio.ssr_count_0x00001000: 1
4 velmor_extend_cmn.cpp velmor_save_modem_ssr_count: function exit <-------------
4 velmor_extend_cmn.cpp velmor_send_common_qmi_msg: function entry ------------->
4 ^ t 31
4 ^ l 4
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532
$ text modem/marks/restart
- type 4096 at TIME
$ rbk-prop get persist.radio.ssr_count_0x00001000
- 1
| fault = [ { service = 'extended', action = 'error', code = 3 } ]
$ rbk 11 0 more
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 3 QMI service framework error. Check client
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532
$ rbk-prop get persist.radio.ssr_count_0x00001000
- 2

== Sync
$ inside velmor_extend_cmn.cpp velmor_utils_cmn.cpp rbk 11 2 more
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
4 velmor_extend_cmn.cpp velmor_send_common_qmi_msg: function entry ------------->
4 ^ t 35
4 ^ l 0
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
$ text modem/marks/nv_sync
- at TIME

== A dump closes restarts and waits; the next goes on at once
$ inside velmor_extend_cmn.cpp velmor_utils_cmn.cpp rbk 11 1
4 velmor_utils_cmn.cpp velmor_get_property_value: persist.vendor.ssr.restart_level: ALL_ENABLE
4 ^ persist.vendor.ssr.restart_level_bak: 
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: need to save ssr state
4 velmor_utils_cmn.cpp velmor_print_property_value: persist.vendor.ssr.restart_level_bak: ALL_ENABLE
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: Will trigger Full Dump, the current state: ALL_ENABLE, the default state: 
2 ^ need to close ssr
4 velmor_utils_cmn.cpp velmor_print_property_value: persist.vendor.ssr.restart_level: ALL_DISABLE
2 velmor_rbk_smart_test.cpp velmor_smart_test_read_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT read ret: -2, old update_cnt: 0, len: 4
1 ^ velmor_efs_read failed, maybe empty
2 velmor_rbk_smart_test.cpp velmor_smart_test_save_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT write ret: 0, new update_cnt: 1
4 velmor_utils_cmn.cpp velmor_get_property_value: persist.radio.ssr_wait_s: 5
2 velmor_rbk_smart_test.cpp velmor_smart_test_ssr_wait_s: ssr wait_s = 5
2 ^ wait-start(5s) ...
2 ^ wait-end(5s)
4 velmor_extend_cmn.cpp velmor_save_modem_ssr_count: function entry ------------->
4 ^ flag = 0x00002000
4 velmor_utils_cmn.cpp velmor_get_property_value: persist.radio.ssr_count_0x00002000: 0
4 velmor_extend_cmn.cpp velmor_update_modem_ssr_count: ssr_type = 0x00002000, ssr_count_old = 0
4 velmor_utils_cmn.cpp velmor_print_property_value: persist.radio.ssr_count_0x00002000: 1
4 velmor_extend_cmn.cpp velmor_save_modem_ssr_count: function exit <-------------
4 velmor_extend_cmn.cpp velmor_send_common_qmi_msg: function entry ------------->
4 ^ t 99
4 ^ l 4
4 ^ function exit <-------------
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002C2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F7373725F7570646174655F636F756E74 00*501
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF002C2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F7373725F7570646174655F636F756E74 00*59 04000000040000000000000001 00*429
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000063000000040000000020 00*532
! sleep 5
$ rbk-prop get persist.vendor.ssr.restart_level
- ALL_DISABLE
$ rbk-prop get persist.vendor.ssr.restart_level_bak
- ALL_ENABLE
$ rbk-prop get persist.radio.ssr_count_0x00002000
- 1
$ show modem/efs/0/nv/item_files/modem/velmor/ssr_update_count
- 01000000
$ text modem/dump/full_dump.txt
- full dump
- type 8192 at TIME
$ rbk 11 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: Will trigger Full Dump, the current state: ALL_DISABLE, the default state: ALL_ENABLE
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000063000000040000000020 00*532
$ rbk-prop get persist.radio.ssr_count_0x00002000
- 2
$ show modem/efs/0/nv/item_files/modem/velmor/ssr_update_count
- 01000000

== A dump without a wait goes straight on; what was kept stays
| efs.'0:/nv/item_files/modem/velmor/ssr_update_count' = 'FF 00 00 00'
$ rbk-prop set persist.radio.ssr_wait_s 0
$ rbk-prop set persist.vendor.ssr.restart_level RELATED
$ rbk-prop set persist.vendor.ssr.restart_level_bak FIRST
$ rbk 11 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: Will trigger Full Dump, the current state: RELATED, the default state: FIRST
2 ^ need to close ssr
2 velmor_rbk_smart_test.cpp velmor_smart_test_read_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT read ret: 0, old update_cnt: 255, len: 4
2 velmor_rbk_smart_test.cpp velmor_smart_test_save_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT write ret: 0, new update_cnt: 256
2 velmor_rbk_smart_test.cpp velmor_smart_test_ssr_wait_s: ssr wait_s = 0
2 ^ modem ssr will not wait
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002C2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F7373725F7570646174655F636F756E74 00*501
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF002C2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F7373725F7570646174655F636F756E74 00*59 0400000004 00*8 01 00*428
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000063000000040000000020 00*532
$ rbk-prop get persist.vendor.ssr.restart_level_bak
- FIRST
$ show modem/efs/0/nv/item_files/modem/velmor/ssr_update_count
- 00010000

== A negative wait stops the dump and leaves restarts closed
$ rbk-prop set persist.radio.ssr_wait_s -1
$ rbk 11 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: need to save ssr state
2 ^ Will trigger Full Dump, the current state: ALL_ENABLE, the default state: 
2 ^ need to close ssr
2 velmor_rbk_smart_test.cpp velmor_smart_test_read_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT read ret: -2, old update_cnt: 0, len: 4
1 ^ velmor_efs_read failed, maybe empty
2 velmor_rbk_smart_test.cpp velmor_smart_test_save_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT write ret: 0, new update_cnt: 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_ssr_wait_s: ssr wait_s = -1
2 ^ modem ssr will not wait
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: wait_s < 0, ssr is stoped
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002C2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F7373725F7570646174655F636F756E74 00*501
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF002C2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F7373725F7570646174655F636F756E74 00*59 04000000040000000000000001 00*429
$ rbk-prop get persist.vendor.ssr.restart_level
- ALL_DISABLE
$ rbk-prop get persist.radio.ssr_count_0x00002000 absent
- absent
$ show modem/dump
- absent
# The level is saved as it stands.
$ rbk-prop unset persist.vendor.ssr.restart_level_bak
$ rbk 11 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: need to save ssr state
2 ^ Will trigger Full Dump, the current state: ALL_DISABLE, the default state: 
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000063000000040000000020 00*532
$ rbk-prop get persist.vendor.ssr.restart_level_bak
- ALL_DISABLE

== A counter that can't be written doesn't stop the dump
env RBK_TRACE=
| fault = [ { service = 'extended', qmi_id = 2, action = 'error', code = 3 } ]
$ rbk 11 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_full_dump: need to save ssr state
2 ^ Will trigger Full Dump, the current state: ALL_ENABLE, the default state: 
2 ^ need to close ssr
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 3 QMI service framework error. Check client
2 velmor_rbk_smart_test.cpp velmor_smart_test_read_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT read ret: -103, old update_cnt: 0, len: 4
1 ^ velmor_efs_read failed, maybe empty
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 3 QMI service framework error. Check client
2 velmor_rbk_smart_test.cpp velmor_smart_test_save_ssr_update_flag: EFS_PATH_MODEM_SSR_UPDATE_COUNT write ret: -103, new update_cnt: 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_ssr_wait_s: ssr wait_s = 5
2 ^ wait-start(5s) ...
2 ^ wait-end(5s)
! sleep 5

== Own prints are switched by 1 and 2
$ inside rbk 11 3 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_ap_hydra_switch: ap_hydra_print, opt = 0
4 velmor_utils_cmn.cpp velmor_print_property_value: persist.vendor.radio.print_stats: 2
2 velmor_rbk_smart_test.cpp velmor_smart_test_ap_hydra_switch: success, need to reboot
$ rbk-prop get persist.vendor.radio.print_stats
- 2
$ rbk 11 3 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_ap_hydra_switch: ap_hydra_print, opt = 1
2 ^ success, need to reboot
$ rbk-prop get persist.vendor.radio.print_stats
- 1

== Hydra prints: written, deleted, and with them a sync and a restart
$ rbk 11 4 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_hydra_print_switch: bp_hydra_print, opt = 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_hydra_print_switch: success, pls wait 10 seconds 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00172F68796472612F68796472615F7072696E745F6D61736B 00*80 0400000004000000000000001F 00*429
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532
$ show modem/efs/0/hydra/hydra_print_mask
- 1F000000
$ rbk 11 4 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_hydra_print_switch: bp_hydra_print, opt = 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_hydra_print_switch: success, pls wait 10 seconds 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:06000000172F68796472612F68796472615F7072696E745F6D61736B 00*522
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532
$ show modem/efs/0/hydra/hydra_print_mask
- absent
$ rbk 11 4 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_hydra_print_switch: bp_hydra_print, opt = 0
1 ^ velmor_efs_delete failed
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:06000000172F68796472612F68796472615F7072696E745F6D61736B 00*522

== QMI prints
$ rbk 11 5 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_qmi_print_switch: bp_qmi_print, opt = 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_qmi_print_switch: success, pls wait 10 seconds 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF002A2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F716D695F7072696E745F666C6167 00*61 04000000040000000000000001 00*429
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532
$ rbk 11 5 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_qmi_print_switch: bp_qmi_print, opt = 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_qmi_print_switch: success, pls wait 10 seconds 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060000002A2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F716D695F7072696E745F666C6167 00*503
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532

== Radio prints
$ rbk 11 6 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_rf_print_switch: bp_rf_print, opt = 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_rf_print_switch: success, pls wait 10 seconds 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00292F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F7072696E745F6D61736B 00*62 0400000004000000000000000F 00*429
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532
$ rbk 11 6 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_rf_print_switch: bp_rf_print, opt = 0
2 velmor_rbk_smart_test.cpp velmor_smart_test_nv_sync: Will trigger NV SYNC
2 velmor_rbk_smart_test.cpp velmor_smart_test_modem_ssr: Will trigger SSR of modem
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_rf_print_switch: success, pls wait 10 seconds 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:06000000292F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F7072696E745F6D61736B 00*504
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000001F000000040000000010 00*532

== A print that can't be written restarts nothing
| fault = [ { service = 'extended', qmi_id = 2, action = 'result', code = -28 } ]
$ rbk 11 4 1
2 velmor_rbk_smart_test.cpp velmor_smart_test_bp_hydra_print_switch: bp_hydra_print, opt = 1
1 ^ velmor_efs_write failed
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0500FF00172F68796472612F68796472615F7072696E745F6D61736B 00*80 0400000004000000000000001F 00*429
$ rbk-prop get persist.radio.ssr_count_0x00001000 absent
- absent

== A dead cycle spins one processor for ever
$ sh ulimit -S -t 1; RBK_LOGCAT=log exec rbk 11 9 5
exit 152
$ sh sed -n 's/^.*\] \(.*\(start\|end\|Will wait.*\)\)$/\1/p' log
- velmor_smart_test_dead_cycle_test: velmor_smart_test_dead_cycle_test start
- velmor_smart_test_dead_cycle_test_do: velmor_smart_test_dead_cycle_test_do start

== Refusals reach nobody
$ rbk 11
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: Too few parameters, Pls refer to the following cmd:
@help 11
$ rbk 11 3
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: Too few parameters, Pls refer to the following cmd:
@help 11
$ rbk 11 6
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: Too few parameters, Pls refer to the following cmd:
@help 11
$ rbk 11 8
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: Too few parameters, Pls refer to the following cmd:
@help 11
$ rbk 11 3 2
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: opt(2) is invalid:
@help 11
$ rbk 11 4 2
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: opt(2) is invalid:
@help 11
$ rbk 11 5 -1
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: note: opt(-1) is invalid:
@help 11
$ rbk 11 10
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: invalid par_i = 10
@help 11
$ rbk 11 -1 1
1 velmor_rbk_smart_test.cpp velmor_smart_test_do: invalid par_i = -1
@help 11

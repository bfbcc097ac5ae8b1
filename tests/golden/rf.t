# Group 3: antenna tests, and the modem's files about them.

== The GPIO test is set, shown and closed
$ rbk 3 0 5 -2
2 velmor_rbk_test_rf.cpp velmor_gpio_test_set: velmor_gpio_test_set
2 ^ velmor_gpio_test_set, gpio_v[0]: 5
2 ^ velmor_gpio_test_set, gpio_v[1]: -2
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:00*8 0200000005000000FEFFFFFF 00*530
$ traced rbk 3 1
4 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
4 ^ proc_pid_path: /proc/N/cmdline
4 ^ proc_pid_buf: RBK
4 ^ str_pid_name: rbk
4 ^ p_pid_info->p_name: rbk
4 ^ close fp
4 ^ p_id: N, p_name: rbk
4 ^ function exit <-------------
4 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk
2 velmor_rbk_test_rf.cpp velmor_gpio_test_get: velmor_gpio_test_get
4 velmor_extend_nvefs.cpp velmor_efs_read: function entry ------------->
4 ^ velmor_efs_read, sub_id 0, path_len: 47
4 ^ buf_len: 365
4 ^ path_value: /nv/item_files/modem/velmor/rf_ant_port_config
4 velmor_extend_api.cpp velmor_extend_qmi_client_open: VELMOR_QMI_NV: qmi_client_get_service_list() returned 0 num_services = 1
4 ^ qmi_client_get_service_list, err = 0, num_entries = 1, num_services = 1
4 ^ qmi_client_init, err = 0, handle = N, client_handle = N
4 ^ QMI client inited
4 velmor_extend_api.cpp velmor_extend_qmi_send_sync: velmor_extend_qmi_send_sync resp_len:444
4 ^ velmor_extend_qmi_handle_req_cb result:0
4 velmor_extend_api.cpp velmor_qmi_result_map: velmor_qmi_result_map, old_result 0, new_result 0
4 velmor_extend_nvefs.cpp velmor_efs_read: result = 0, rsp.result = 0
4 ^ data_len_all = 12, data_len_send = 12, data_len_recv = 12, read_count = 0, data_len_cur = 0
4 ^ function exit <-------------
2 velmor_rbk_test_rf.cpp velmor_gpio_test_get: data len(12)data: 
2 ^  02
2 ^  00
@again 2
2 ^  05
2 ^  00
@again 2
2 ^  FE
2 ^  FF
@again 2
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002F2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F616E745F706F72745F636F6E666967 00*499
$ rbk 3 2
2 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_gpio_test_closed
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060000002F2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F616E745F706F72745F636F6E666967 00*499
$ show modem/efs/0/nv/item_files/modem/velmor/rf_ant_port_config
- absent
$ rbk 3 1
2 velmor_rbk_test_rf.cpp velmor_gpio_test_get: velmor_gpio_test_get
1 ^ velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-2)
@help 3
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002F2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F616E745F706F72745F636F6E666967 00*499
$ rbk 3 2
2 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_gpio_test_closed
1 ^ velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-2)
@help 3
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060000002F2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F616E745F706F72745F636F6E666967 00*499

== The transmit test is set, shown and closed
$ rbk 3 3 1 4 0xFFFFFFFFFFFFFFFE
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_rf_tx_test_set, argc(6)
2 ^  v_ant(1)
2 ^  v_sys(4)
2 ^  v_band_list(18446744073709551614)
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:01000000000000000100000004000000FEFFFFFFFFFFFFFF 00*526
$ rbk 3 4
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_get: velmor_rf_tx_test_get
2 ^ data len(16)
  data: 
2 ^  01
2 ^  00
@again 2
2 ^  04
2 ^  00
@again 2
2 ^  FE
2 ^  FF
@again 6
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002B2F6E762F6974656D5F66696C65732F6D6F64656D2F616E74656E6E612F616E745F74785F636F6E666967 00*503
$ rbk 3 5
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_closed: velmor_rf_tx_test_closed
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060000002B2F6E762F6974656D5F66696C65732F6D6F64656D2F616E74656E6E612F616E745F74785F636F6E666967 00*503
$ show modem/efs/0/nv/item_files/modem/antenna/ant_tx_config
- absent
$ rbk 3 5
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_closed: velmor_rf_tx_test_closed
1 ^ velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-2)
@help 3
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060000002B2F6E762F6974656D5F66696C65732F6D6F64656D2F616E74656E6E612F616E745F74785F636F6E666967 00*503
$ rbk 3 4
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_get: velmor_rf_tx_test_get
1 ^ velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-2)
@help 3
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002B2F6E762F6974656D5F66696C65732F6D6F64656D2F616E74656E6E612F616E745F74785F636F6E666967 00*503

== Bands are read in either base
$ rbk 3 3 1 4 0x10
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_rf_tx_test_set, argc(6)
2 ^  v_ant(1)
2 ^  v_sys(4)
2 ^  v_band_list(16)
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:0100000000000000010000000400000010 00*533
$ rbk 3 3 1 4 16
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_rf_tx_test_set, argc(6)
2 ^  v_ant(1)
2 ^  v_sys(4)
2 ^  v_band_list(16)
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:0100000000000000010000000400000010 00*533

== Values behind the fiftieth are only counted
$ rbk-prop set persist.vendor.radio.adb_log_shell 9
$ rbk 3 0 -1*51
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:00*8 33000000 FF*200 00*338
$ show modem/efs/0/nv/item_files/modem/velmor/rf_ant_port_config
- 33000000 FF*200
$ rbk-prop set persist.vendor.radio.adb_log_shell 11
$ rbk 3 0
2 velmor_rbk_test_rf.cpp velmor_gpio_test_set: velmor_gpio_test_set
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:00*550

== A long file is shown up to the buffer
| efs.'0:/nv/item_files/modem/antenna/ant_tx_config' = { fill = 0x5A, size = 1000 }
$ rbk 3 4
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_get: velmor_rf_tx_test_get
2 ^ data len(365)
  data: 
2 ^  5A
@again 364
2 ^ 
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002B2F6E762F6974656D5F66696C65732F6D6F64656D2F616E74656E6E612F616E745F74785F636F6E666967 00*503

== A failed request shows the help, also of those to files
| fault = [ { service = 'extended', action = 'error', code = 94 } ]
$ rbk 3 0 1
2 velmor_rbk_test_rf.cpp velmor_gpio_test_set: velmor_gpio_test_set
2 ^ velmor_gpio_test_set, gpio_v[0]: 1
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client
1 velmor_rbk_test_rf.cpp velmor_gpio_test_set: velmor_extend_qmi_send_sync fail, REQUEST_ID_COMMON
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-3)
@help 3
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:00*8 0100000001 00*537
$ rbk 3 3 1 4 1
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_rf_tx_test_set, argc(6)
2 ^  v_ant(1)
2 ^  v_sys(4)
2 ^  v_band_list(1)
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client
1 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_extend_qmi_send_sync fail, REQUEST_ID_COMMON
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-3)
@help 3
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:0100000000000000010000000400000001 00*533
$ rbk 3 1
2 velmor_rbk_test_rf.cpp velmor_gpio_test_get: velmor_gpio_test_get
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client
1 velmor_rbk_test_rf.cpp velmor_gpio_test_get: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-103)
@help 3
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:040000002F2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F616E745F706F72745F636F6E666967 00*499
$ rbk 3 2
2 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_gpio_test_closed
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client
1 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(-103)
@help 3
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:060000002F2F6E762F6974656D5F66696C65732F6D6F64656D2F76656C6D6F722F72665F616E745F706F72745F636F6E666967 00*499

== Refusals reach nobody
$ rbk 3
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Too few parameters, Pls refer to the following cmd:
@help 3
$ rbk 3 6
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 3
$ rbk 3 -1
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 3
$ rbk 3 1 x
2 velmor_rbk_test_rf.cpp velmor_gpio_test_get: velmor_gpio_test_get
1 ^ note: Cmd error, should be: rbk 3 1 , Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
@help 3
$ rbk 3 2 x
2 velmor_rbk_test_rf.cpp velmor_gpio_test_closed: velmor_gpio_test_closed
1 ^ note: Cmd error, should be: rbk 3 2 , Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
@help 3
$ rbk 3 4 x
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_get: velmor_rf_tx_test_get
1 ^ note: Cmd error, should be: rbk 3 4 , Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
@help 3
$ rbk 3 5 x
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_closed: velmor_rf_tx_test_closed
1 ^ note: Cmd error, should be: rbk 3 5 , Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
@help 3
$ rbk 3 3 1 4
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_rf_tx_test_set, argc(5)
1 ^ note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
@help 3
$ rbk 3 3 1 4 1 2
2 velmor_rbk_test_rf.cpp velmor_rf_tx_test_set: velmor_rf_tx_test_set, argc(7)
1 ^ note: need 5 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_rf.cpp velmor_test_rf_do: note: Error happen! error_code(268431370)
@help 3

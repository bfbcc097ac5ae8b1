# Group 5: cards, sensors and device states; the eSIM stands in esim.t, raw diag commands in diag.t.

== Card commands follow the stored cards
$ inside rbk 5 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_query: velmor_cmn_card_status_query
- param(cnt: 0):
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 39, l: 0
4 velmor_extend_api.cpp velmor_extend_qmi_client_open: VELMOR_QMI_NV: qmi_client_get_service_list() returned 0 num_services = 1
4 ^ qmi_client_get_service_list, err = 0, num_entries = 1, num_services = 1
4 ^ qmi_client_init, err = 0, handle = N, client_handle = N
4 ^ QMI client inited
4 velmor_extend_api.cpp velmor_extend_qmi_send_sync: velmor_extend_qmi_send_sync resp_len:508
4 ^ velmor_extend_qmi_handle_req_cb result:0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: result = 0, rsp.result = 0
- data len(12)
- data: 27 00 00 00 04 00 00 00 01 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000027 00*541
$ rbk 5 3 1 7 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_set: velmor_cmn_card_status_set
- param(cnt: 3): 1 1 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 57, l: 12
2 ^ result = 0, rsp.result = 0
- data len(8)
- data: 39 00 00 00 00 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:0200000000000000390000000C0000000100000001 00*529
$ rbk 5 2 7
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_get: velmor_cmn_card_status_get
- param(cnt: 1): 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 55, l: 4
2 ^ result = 0, rsp.result = 0
- data len(12)
- data: 37 00 00 00 04 00 00 00 00 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:0200000000000000370000000400000001 00*533
$ rbk 5 2 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_get: velmor_cmn_card_status_get
- param(cnt: 1): 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 55, l: 4
2 ^ result = 0, rsp.result = 0
- data len(12)
- data: 37 00 00 00 04 00 00 00 01 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000003700000004 00*537
$ rbk 5 4
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_type_query: velmor_cmn_card_type_query
- param(cnt: 0):
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 56, l: 0
2 ^ result = 0, rsp.result = 0
- data len(12)
- data: 38 00 00 00 04 00 00 00 02 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000038 00*541

== The hotswap test is started with its numbers and stopped by one
$ rbk 5 6 2 5 -6 9
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_hotswap_test: velmor_cmn_card_hotswap_test
2 ^ opt: 2
- param(cnt: 4): 2 5 -6 9
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 80, l: 16
2 ^ result = 0, rsp.result = 0
- data len(8)
- data: 50 00 00 00 00 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000050000000100000000200000005000000FAFFFFFF09 00*521
$ show modem/marks
- hotswap
$ rbk 5 6 0 1 2 3 4
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_hotswap_test: velmor_cmn_card_hotswap_test
2 ^ opt: 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 80, l: 4
2 ^ result = 0, rsp.result = 0
- data len(8)
- data: 50 00 00 00 00 00 00 00
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000005000000004 00*537
$ show modem/marks

== The length of an answer is foreign: whole, a byte longer than the record, negative, a sum that wraps
| fault = [
|   { service = 'extended', prefix = '02000000 00000000 27', action = 'raw', bytes = '010400 00000000 020400 FC010000 102602 00000000 00000000 27000000 EC010000 00*534' },
|   { service = 'extended', prefix = '02000000 00000000 37', action = 'raw', bytes = '010400 00000000 020400 FC010000 102602 00000000 00000000 37000000 ED010000 00*534' },
|   { service = 'extended', prefix = '02000000 00000000 38', action = 'raw', bytes = '010400 00000000 020400 FC010000 102602 00000000 00000000 38000000 00FFFFFF 00*534' },
|   { service = 'extended', prefix = '02000000 00000000 39', action = 'raw', bytes = '010400 00000000 020400 FC010000 102602 00000000 00000000 39000000 FFFFFFFF 00*534' },
| ]
$ rbk 5 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_query: velmor_cmn_card_status_query
- param(cnt: 0):
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 39, l: 0
2 ^ result = 0, rsp.result = 0
- data len(500)
- data: 27 00 00 00 EC 01 00*494
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000027 00*541
$ rbk 5 2 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_get: velmor_cmn_card_status_get
- param(cnt: 1): 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 55, l: 4
2 ^ result = 0, rsp.result = 0
- data len(501)
- data: 37 00 00 00 ED 01 00*494
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000003700000004 00*537
$ rbk 5 4
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_type_query: velmor_cmn_card_type_query
- param(cnt: 0):
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 56, l: 0
2 ^ result = 0, rsp.result = 0
- data len(-248)
- data: 38 00 00 00 00 FF FF FF 00*492
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000038 00*541
$ rbk 5 3 0 0 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_set: velmor_cmn_card_status_set
- param(cnt: 3): 0 0 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 57, l: 12
2 ^ result = 0, rsp.result = 0
- data len(7)
- data: 39 00 00 00 FF FF FF
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:0200000000000000390000000C 00*537

== A card command that fails shows the help, one that the modem refuses is only told
| fault = [
|   { service = 'extended', qmi_id = 4, prefix = '02000000 00000000 27', action = 'result', code = -5 },
|   { service = 'extended', qmi_id = 4, action = 'error', code = 94 },
| ]
$ rbk 5 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_query: velmor_cmn_card_status_query
- param(cnt: 0):
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 39, l: 0
2 ^ result = 0, rsp.result = -5
1 ^ rsp.result fail
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000027 00*541
$ rbk 5 4
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_type_query: velmor_cmn_card_type_query
- param(cnt: 0):
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 56, l: 0
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: result = -3, rsp.result = 0
1 ^ velmor_extend_qmi_send_sync fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(-3)
@help 5
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000038 00*541
$ rbk 5 6 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_hotswap_test: velmor_cmn_card_hotswap_test
2 ^ opt: 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 80, l: 4
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: result = -3, rsp.result = 0
1 ^ velmor_extend_qmi_send_sync fail
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(-3)
@help 5
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:02000000000000005000000004 00*537

== The SAR index is set and read back; a number that is none goes out as 0
| sar.dsi = 4
$ inside rbk 5 5
4 velmor_utils_cmn.cpp velmor_get_property_value: debug.modem.sar.judge_dsi: -1
4 velmor_extend_cmn.cpp velmor_get_sar_dsi: dsi vailid = 1 , dsi value = 4
8 JUDGE SAR DSI: -1
8 Modem SAR DSI: 4
> 0x0011 0x0002 30000 ms
$ rbk-prop set debug.modem.sar.judge_dsi 6
$ inside rbk 5 7 20
4 velmor_extend_cmn.cpp velmor_set_sar_dsi: function entry ------------->
4 ^ function exit, qmi_client_error = 0 <-------------
8 SAR DSI(to be set): 20, the setting result: 0
> 0x0011 0x0001 30000 ms 01:14000000
$ rbk 5 5
8 JUDGE SAR DSI: 6
8 Modem SAR DSI: 20
> 0x0011 0x0002 30000 ms
$ rbk 5 7 21
8 SAR DSI(to be set): 21, the setting result: 0
> 0x0011 0x0001 30000 ms 01:00000000
$ rbk 5 5
8 JUDGE SAR DSI: 6
8 Modem SAR DSI: 0
> 0x0011 0x0002 30000 ms
$ rbk 5 7 -3
8 SAR DSI(to be set): -3, the setting result: 0
> 0x0011 0x0001 30000 ms 01:00000000

== An open mask shows no more traces, once the SAR index or states are asked for
$ rbk-prop set persist.vendor.radio.adb_log_shell 12
$ rbk 5 5
2 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
2 ^ proc_pid_path: /proc/N/cmdline
2 ^ proc_pid_buf: RBK
2 ^ str_pid_name: rbk
2 ^ p_pid_info->p_name: rbk
2 ^ close fp
2 ^ p_id: N, p_name: rbk
2 ^ function exit <-------------
2 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk
8 JUDGE SAR DSI: -1
8 Modem SAR DSI: 0
> 0x0011 0x0002 30000 ms
$ rbk 5 8
2 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
2 ^ proc_pid_path: /proc/N/cmdline
2 ^ proc_pid_buf: RBK
2 ^ str_pid_name: rbk
2 ^ p_pid_info->p_name: rbk
2 ^ close fp
2 ^ p_id: N, p_name: rbk
2 ^ function exit <-------------
2 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk

== A SAR service that isn't there
| modem.services = ['extended']
$ inside rbk 5 5
4 velmor_utils_cmn.cpp velmor_get_property_value: debug.modem.sar.judge_dsi: -1
4 velmor_extend_cmn.cpp velmor_init_qmi_client_rf_sar: qmi_client_init_instance failed, qmi_client_error = -3
4 velmor_extend_cmn.cpp velmor_check_and_init_qmi_client_rf_sar: qmi_client_error is NULL
4 velmor_extend_cmn.cpp velmor_get_sar_dsi: velmor_check_and_init_qmi_client_rf_sar FAIL
8 JUDGE SAR DSI: -1
8 Modem SAR DSI: -1
$ inside rbk 5 7 3
4 velmor_extend_cmn.cpp velmor_set_sar_dsi: function entry ------------->
4 velmor_extend_cmn.cpp velmor_init_qmi_client_rf_sar: qmi_client_init_instance failed, qmi_client_error = -3
4 velmor_extend_cmn.cpp velmor_check_and_init_qmi_client_rf_sar: qmi_client_error is NULL
4 velmor_extend_cmn.cpp velmor_set_sar_dsi: velmor_check_and_init_qmi_client_rf_sar FAIL
4 ^ function exit, qmi_client_error = -1 <-------------
8 SAR DSI(to be set): 3, the setting result: -1
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(-1)
@help 5
== A SAR service that goes away
| fault = [ { service = 'sar', action = 'down' } ]
$ inside rbk 5 5
4 velmor_utils_cmn.cpp velmor_get_property_value: debug.modem.sar.judge_dsi: -1
4 velmor_extend_cmn.cpp velmor_get_sar_dsi: qmi_client_send_msg_sync failed, qmi_client_error = -2
8 JUDGE SAR DSI: -1
8 Modem SAR DSI: -1
> 0x0011 0x0002 30000 ms
$ inside rbk 5 7 3
4 velmor_extend_cmn.cpp velmor_set_sar_dsi: function entry ------------->
4 ^ qmi_client_send_msg_sync failed, qmi_client_error = -2
4 ^ function exit, qmi_client_error = -2 <-------------
8 SAR DSI(to be set): 3, the setting result: -2
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(-2)
@help 5
> 0x0011 0x0001 30000 ms 01:03000000

== Only device states that are set are shown
$ inside rbk 5 8
4 velmor_utils_cmn.cpp velmor_get_property_value: debug.device.wifi_state: -255
4 ^ debug.device.hotspot_state: -255
4 ^ debug.device.modem_state: -255
4 ^ debug.device.sar_sensor_state: -255
4 ^ debug.device.hall_sensor_state: -255
4 ^ debug.device.audio_receiver_state: -255
4 ^ debug.device.mcc_state: -255
4 ^ debug.device.bluetooth_pan_state: -255
4 ^ debug.device.bluetooth_state: -255
4 ^ debug.device.sar_sensor2_state: -255
4 ^ debug.device.cable_state: -255
4 ^ debug.device.usb_state: -255
4 ^ debug.device.use_case_test: -255
4 ^ debug.device.radiopower_state: -255
4 ^ debug.device.simcard_state: -255
4 ^ debug.device.smart_tx_state: -255
4 ^ debug.device.white_list_state: -255
4 ^ debug.device.gpd_sensor_state: -255
4 ^ debug.device.gravity_y_axes_state: -255
4 ^ debug.device.ntn_radio_power_state: -255
4 ^ debug.device.hall_sensor2_state: -255
4 ^ debug.device.sar_sensor2_one_type: -255
4 ^ debug.device.sar_sensor3_state: -255
$ rbk-prop set debug.device.wifi_state 1
$ rbk-prop set debug.device.mcc_state -255
$ rbk-prop set debug.device.usb_state word
$ rbk-prop set debug.device.sar_sensor3_state -2
$ rbk 5 8
8 [0]WIFI_STATE: 1
8 [11]USB_STATE: 0
8 [22]SAR_SENSOR3_STATE: -2

== Refusals reach nobody
$ rbk 5
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Too few parameters, Pls refer to the following cmd:
@help 5
$ rbk 5 9
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 5
$ rbk 5 -1
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 5
$ rbk 5 11
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: the second parameters is invalid, Pls refer to the following cmd:
@help 5
$ rbk 5 1 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_query: velmor_cmn_card_status_query
1 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_cmd: note: need 3 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 2
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_get: velmor_cmn_card_status_get
1 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_cmd: note: need 4 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 3 0 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_set: velmor_cmn_card_status_set
1 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_cmd: note: need 6 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 4 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_type_query: velmor_cmn_card_type_query
1 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_cmd: note: need 3 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 6
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_hotswap_test: velmor_cmn_card_hotswap_test
1 ^ note: need 4 inputs at least, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 6 1 10 10
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_hotswap_test: velmor_cmn_card_hotswap_test
2 ^ opt: 1
1 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_cmd_ex: note: need 7 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 6 1 10 10 0 0
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_hotswap_test: velmor_cmn_card_hotswap_test
2 ^ opt: 1
1 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_cmd_ex: note: need 7 inputs, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5
$ rbk 5 7
8 note: Too few parameters, Pls refer to the following cmd:
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(268431370)
@help 5

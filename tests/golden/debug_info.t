# Group 7: the parser of a diag packet, with and without its steps, and the statistics engine's own debug record.

== The parser on the packet of the program
$ rbk 7 0 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_parsing_process: length = 48, print_flag = 0
- version = 196609, mcc = 29440, mnc_num 128, mnc 704, tac 497189504, cgi 2028284490176, pci 51666
- freq_band_ind = 64, dl_earfcn = 27450241, dl_bw 1280, ul_earfcn 24836608, ul_bw 1280, allow_access 128, scs 0
$ rbk 7 0 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_parsing_process: length = 48, print_flag = 1
-     UNPK_I, name: version, val: 196609(0x010003), val_size: 4, unpk_cnt: 4, data_base: 0, base_bit: 0
- BASE_WITH_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(0), bit(32), id(0x123)
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(31), bit(250), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 31, low: 3, high: 18, param: 250, name: mcc
-     UNPK_I, name: mcc_tmp1, val: 721138937611013120(0x00CC01020B00020A), val_size: 8, unpk_cnt: 39, data_base: 4, base_bit: 32
-     UNPK_I, name: mcc_tmp2, val: 16807562(0x8A760001), val_size: 8, unpk_cnt: 47, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 721138937611013120, new_val: 29440, bit_num: 126, name: mcc, id(0x123)
- UNPK_LOW, old_val: 29440, new_val: 29440, bit_num: 16, mask_max(0xffff), old_size(2), name: mcc, id(0x123)
- UNPK_MID, old_val: 721138937611013120, new_val: 29440, low: 3, high: 18, name: mcc, id(0x123)
-     UNPK_AT, name: mcc, val: 29440(0x0073), low: 3, high: 18, bit_start: 250, bit_num: 16
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(33), bit(266), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 33, low: 3, high: 10, param: 266, name: mnc_num
-     UNPK_I, name: mnc_num_tmp1, val: 8541650646968500737(0x01020B00020A8A76), val_size: 8, unpk_cnt: 41, data_base: 4, base_bit: 32
-     UNPK_I, name: mnc_num_tmp2, val: 256(0x0001), val_size: 8, unpk_cnt: 49, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 8541650646968500737, new_val: 128, bit_num: 126, name: mnc_num, id(0x123)
- UNPK_LOW, old_val: 128, new_val: 128, bit_num: 8, mask_max(0xff), old_size(1), name: mnc_num, id(0x123)
- UNPK_MID, old_val: 8541650646968500737, new_val: 128, low: 3, high: 10, name: mnc_num, id(0x123)
-     UNPK_AT, name: mnc_num, val: 128(0x80), low: 3, high: 10, bit_start: 266, bit_num: 8
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(34), bit(274), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 34, low: 3, high: 18, param: 274, name: mnc
-     UNPK_I, name: mnc_tmp1, val: 33365822839720706(0x020B00020A8A76), val_size: 8, unpk_cnt: 42, data_base: 4, base_bit: 32
-     UNPK_I, name: mnc_tmp2, val: 1(0x01), val_size: 8, unpk_cnt: 50, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 33365822839720706, new_val: 704, bit_num: 126, name: mnc, id(0x123)
- UNPK_LOW, old_val: 704, new_val: 704, bit_num: 16, mask_max(0xffff), old_size(2), name: mnc, id(0x123)
- UNPK_MID, old_val: 33365822839720706, new_val: 704, low: 3, high: 18, name: mnc, id(0x123)
-     UNPK_AT, name: mnc, val: 704(0xC002), low: 3, high: 18, bit_start: 274, bit_num: 16
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(37), bit(298), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 37, low: 3, high: 34, param: 298, name: tac
-     UNPK_I, name: tac_tmp1, val: 1101500385794(0x020A8A760001), val_size: 8, unpk_cnt: 45, data_base: 4, base_bit: 32
-     UNPK_I, name: tac_tmp2, val: 0(0x), val_size: 8, unpk_cnt: 53, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 1101500385794, new_val: 497189504, bit_num: 126, name: tac, id(0x123)
- UNPK_LOW, old_val: 497189504, new_val: 497189504, bit_num: 32, mask_max(0xffffffff), old_size(4), name: tac, id(0x123)
- UNPK_MID, old_val: 1101500385794, new_val: 497189504, low: 3, high: 34, name: tac, id(0x123)
-     UNPK_AT, name: tac, val: 497189504(0x8082A21D), low: 3, high: 34, bit_start: 298, bit_num: 32
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(23), bit(186), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 23, low: 3, high: 66, param: 186, name: cgi
-     UNPK_I, name: cgi_tmp1, val: 8113137960704(0x00C7B4FC6007), val_size: 8, unpk_cnt: 31, data_base: 4, base_bit: 32
-     UNPK_I, name: cgi_tmp2, val: 721138937611013120(0x00CC01020B00020A), val_size: 8, unpk_cnt: 39, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 8113137960704, new_val: 2028284490176, bit_num: 126, name: cgi, id(0x123)
- UNPK_LOW, old_val: 2028284490176, new_val: 2028284490176, bit_num: 64, mask_max(0xffffffffffffffff), old_size(8), name: cgi, id(0x123)
- UNPK_MID, old_val: 8113137960704, new_val: 2028284490176, low: 3, high: 66, name: cgi, id(0x123)
-     UNPK_AT, name: cgi, val: 2028284490176(0xC0312D3FD801), low: 3, high: 66, bit_start: 186, bit_num: 64
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(1), bit(10), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 1, low: 3, high: 18, param: 10, name: pci
-     UNPK_I, name: pci_tmp1, val: 1684624113999750985(0x492703C7B4FC6017), val_size: 8, unpk_cnt: 9, data_base: 4, base_bit: 32
-     UNPK_I, name: pci_tmp2, val: 16717369012715409153(0x014F066E8B0600E8), val_size: 8, unpk_cnt: 17, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 1684624113999750985, new_val: 51666, bit_num: 126, name: pci, id(0x123)
- UNPK_LOW, old_val: 51666, new_val: 51666, bit_num: 16, mask_max(0xffff), old_size(2), name: pci, id(0x123)
- UNPK_MID, old_val: 1684624113999750985, new_val: 51666, low: 3, high: 18, name: pci, id(0x123)
-     UNPK_AT, name: pci, val: 51666(0xD2C9), low: 3, high: 18, bit_start: 10, bit_num: 16
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(41), bit(330), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 41, low: 3, high: 18, param: 330, name: freq_band_ind
-     UNPK_I, name: freq_band_ind_tmp1, val: 256(0x0001), val_size: 8, unpk_cnt: 49, data_base: 4, base_bit: 32
-     UNPK_I, name: freq_band_ind_tmp2, val: 0(0x), val_size: 8, unpk_cnt: 57, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 256, new_val: 64, bit_num: 126, name: freq_band_ind, id(0x123)
- UNPK_LOW, old_val: 64, new_val: 64, bit_num: 16, mask_max(0xffff), old_size(2), name: freq_band_ind, id(0x123)
- UNPK_MID, old_val: 256, new_val: 64, low: 3, high: 18, name: freq_band_ind, id(0x123)
-     UNPK_AT, name: freq_band_ind, val: 64(0x40), low: 3, high: 18, bit_start: 330, bit_num: 16
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(11), bit(90), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 11, low: 3, high: 34, param: 90, name: dl_earfcn
-     UNPK_I, name: dl_earfcn_tmp1, val: 426689676524088838(0x066E8B0600E8EB05), val_size: 8, unpk_cnt: 19, data_base: 4, base_bit: 32
-     UNPK_I, name: dl_earfcn_tmp2, val: 18209397996515234816(0x0014001400C7B4FC), val_size: 8, unpk_cnt: 27, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 426689676524088838, new_val: 27450241, bit_num: 126, name: dl_earfcn, id(0x123)
- UNPK_LOW, old_val: 27450241, new_val: 27450241, bit_num: 32, mask_max(0xffffffff), old_size(4), name: dl_earfcn, id(0x123)
- UNPK_MID, old_val: 426689676524088838, new_val: 27450241, low: 3, high: 34, name: dl_earfcn, id(0x123)
-     UNPK_AT, name: dl_earfcn, val: 27450241(0x81DBA201), low: 3, high: 34, bit_start: 90, bit_num: 32
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(19), bit(154), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 19, low: 3, high: 18, param: 154, name: dl_bw
-     UNPK_I, name: dl_bw_tmp1, val: 18209397996515234816(0x0014001400C7B4FC), val_size: 8, unpk_cnt: 27, data_base: 4, base_bit: 32
-     UNPK_I, name: dl_bw_tmp2, val: 144620963424634720(0x6007000000CC0102), val_size: 8, unpk_cnt: 35, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 18209397996515234816, new_val: 1280, bit_num: 126, name: dl_bw, id(0x123)
- UNPK_LOW, old_val: 1280, new_val: 1280, bit_num: 16, mask_max(0xffff), old_size(2), name: dl_bw, id(0x123)
- UNPK_MID, old_val: 18209397996515234816, new_val: 1280, low: 3, high: 18, name: dl_bw, id(0x123)
-     UNPK_AT, name: dl_bw, val: 1280(0x0005), low: 3, high: 18, bit_start: 154, bit_num: 16
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(15), bit(122), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 15, low: 3, high: 34, param: 122, name: ul_earfcn
-     UNPK_I, name: ul_earfcn_tmp1, val: 1441173871090460672(0x00E8EB0500140014), val_size: 8, unpk_cnt: 23, data_base: 4, base_bit: 32
-     UNPK_I, name: ul_earfcn_tmp2, val: 8113137960704(0x00C7B4FC6007), val_size: 8, unpk_cnt: 31, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 1441173871090460672, new_val: 24836608, bit_num: 126, name: ul_earfcn, id(0x123)
- UNPK_LOW, old_val: 24836608, new_val: 24836608, bit_num: 32, mask_max(0xffffffff), old_size(4), name: ul_earfcn, id(0x123)
- UNPK_MID, old_val: 1441173871090460672, new_val: 24836608, low: 3, high: 34, name: ul_earfcn, id(0x123)
-     UNPK_AT, name: ul_earfcn, val: 24836608(0x00FA7A01), low: 3, high: 34, bit_start: 122, bit_num: 32
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(21), bit(170), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 21, low: 3, high: 18, param: 170, name: ul_bw
-     UNPK_I, name: ul_bw_tmp1, val: 531702609392702464(0x001400C7B4FC6007), val_size: 8, unpk_cnt: 29, data_base: 4, base_bit: 32
-     UNPK_I, name: ul_bw_tmp2, val: 3098431484592128(0x000000CC01020B), val_size: 8, unpk_cnt: 37, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 531702609392702464, new_val: 1280, bit_num: 126, name: ul_bw, id(0x123)
- UNPK_LOW, old_val: 1280, new_val: 1280, bit_num: 16, mask_max(0xffff), old_size(2), name: ul_bw, id(0x123)
- UNPK_MID, old_val: 531702609392702464, new_val: 1280, low: 3, high: 18, name: ul_bw, id(0x123)
-     UNPK_AT, name: ul_bw, val: 1280(0x0005), low: 3, high: 18, bit_start: 170, bit_num: 16
- UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(36), bit(290), id(0x123)
- PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: 36, low: 3, high: 10, param: 290, name: allow_access
-     UNPK_I, name: allow_access_tmp1, val: 281984098763264(0x00020A8A760001), val_size: 8, unpk_cnt: 44, data_base: 4, base_bit: 32
-     UNPK_I, name: allow_access_tmp2, val: 0(0x), val_size: 8, unpk_cnt: 52, data_base: 4, base_bit: 32
- UNPK_HIGH, old_val: 281984098763264, new_val: 128, bit_num: 126, name: allow_access, id(0x123)
- UNPK_LOW, old_val: 128, new_val: 128, bit_num: 8, mask_max(0xff), old_size(1), name: allow_access, id(0x123)
- UNPK_MID, old_val: 281984098763264, new_val: 128, low: 3, high: 10, name: allow_access, id(0x123)
-     UNPK_AT, name: allow_access, val: 128(0x80), low: 3, high: 10, bit_start: 290, bit_num: 8
- version = 196609, mcc = 29440, mnc_num 128, mnc 704, tac 497189504, cgi 2028284490176, pci 51666
- freq_band_ind = 64, dl_earfcn = 27450241, dl_bw 1280, ul_earfcn 24836608, ul_bw 1280, allow_access 128, scs 0

== The built-in record, of version 4
$ inside velmor_extend_cmn.cpp rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
4 velmor_extend_cmn.cpp velmor_common_qmi_req: function entry ------------->
4 ^ l 0
4 ^ function exit <-------------
- UNPK[size:1], version = 4
- -------- stats main info start --------
- UNPK[size:1], g_modem_stats_feature_enable_status = 1
- UNPK[size:8], g_unpk_version_not_support_num = 0
- UNPK[size:8], g_modem_stats_cmd_ok_count = 1
- UNPK[size:8], g_modem_stats_cmd_fail_count = 2
- UNPK[size:8], hydra_system_heapi_mem_max_num = 3
- UNPK[size:8], hydra_system_heapi_mem_cur_num = 4
- UNPK[size:4], modem_statsi_cmd_q_count = 5
- UNPK[size:4], modem_statsi_cmd_free_q_count = 6
- UNPK[size:4], g_hydra_log_mask = 7
- UNPK[size:4], g_hydra_log_stats_mask = 8
- -------- stats main info end, cnt(58) --------
- -------- stats diag info start --------
- UNPK[size:1], init_state = 9
- UNPK[size:4], listener_event_num = 10
- UNPK[size:1], listener_event_state = 11
- UNPK[size:4], listener_event_call_num = 12
- UNPK[size:4], listener_event_parse_num = 13
- UNPK[size:4], listener_log_num = 14
- UNPK[size:1], listener_log_state = 15
- UNPK[size:8], listener_log_call_num = 16
- UNPK[size:8], listener_log_parse_num = 17
- UNPK[size:4], poll_update_call_num = 18
- UNPK[size:4], poll_update_parse_num = 19
- UNPK[size:8], listener_event_callback_num = 20
- UNPK[size:8], listener_log_callback_num = 21
- UNPK[size:4], lte_cell_id_invalid_num = 22
- UNPK[size:4], nr5g_cell_id_invalid_num = 23
- UNPK[size:4], event_duration_ms_max = 24
- UNPK[size:4], log_duration_ms_max = 25
- UNPK[size:4], do_duration_ms_max = 26
- UNPK[size:4], debug_call_num = 27
- UNPK[size:4], debug_parse_num = 28
- UNPK[size:4], cust_event_call_num = 29
- UNPK[size:4], cust_event_parse_num = 30
- -------- stats diag info end, cnt(153) --------
- -------- stats cm info start --------
- UNPK[size:1], init_state = 31
- UNPK[size:1], listener_state = 32
- UNPK[size:4], listener_call_event_call_num = 33
- UNPK[size:4], listener_call_event_parse_num = 34
- UNPK[size:4], listener_subs_event_call_num = 35
- UNPK[size:4], listener_subs_event_parse_num = 36
- UNPK[size:4], listener_ss_event_call_num = 37
- UNPK[size:4], listener_ss_event_parse_num = 38
- UNPK[size:4], listener_stats_event_call_num = 39
- UNPK[size:4], listener_stats_event_parse_num = 40
- UNPK[size:4], poll_update_rf_call_num = 41
- UNPK[size:4], poll_update_rf_parse_num = 42
- UNPK[size:4], poll_update_lte_call_num = 43
- UNPK[size:4], poll_update_lte_parse_num = 44
- UNPK[size:4], poll_update_nr5g_call_num = 45
- UNPK[size:4], poll_update_nr5g_parse_num = 46
- -------- stats cm info end, cnt(211) --------
- -------- stats uim info start --------
- UNPK[size:1], init_state = 47
- UNPK[size:1], listener_state = 48
- UNPK[size:4], listener_event_call_num = 49
- UNPK[size:4], listener_event_parse_num = 50
- -------- stats uim info end, cnt(221) --------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== The fields of version 0, and what more of the record is there
| [debug_info]
| record = '00 01 0100000000000000 11*300'
$ rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
- UNPK[size:1], version = 0
- -------- stats main info start --------
- UNPK[size:1], g_modem_stats_feature_enable_status = 1
- UNPK[size:8], g_unpk_version_not_support_num = 1
- UNPK[size:8], g_modem_stats_cmd_ok_count = 1229782938247303441
- UNPK[size:8], g_modem_stats_cmd_fail_count = 1229782938247303441
- -------- stats main info end, cnt(26) --------
- -------- stats diag info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:4], listener_event_num = 286331153
- UNPK[size:1], listener_event_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- UNPK[size:4], listener_log_num = 286331153
- UNPK[size:1], listener_log_state = 17
- UNPK[size:8], listener_log_call_num = 1229782938247303441
- UNPK[size:8], listener_log_parse_num = 1229782938247303441
- UNPK[size:4], poll_update_call_num = 286331153
- UNPK[size:4], poll_update_parse_num = 286331153
- -------- stats diag info end, cnt(69) --------
- -------- stats cm info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_call_event_call_num = 286331153
- UNPK[size:4], listener_call_event_parse_num = 286331153
- UNPK[size:4], listener_subs_event_call_num = 286331153
- UNPK[size:4], listener_subs_event_parse_num = 286331153
- UNPK[size:4], listener_ss_event_call_num = 286331153
- UNPK[size:4], listener_ss_event_parse_num = 286331153
- UNPK[size:4], listener_stats_event_call_num = 286331153
- UNPK[size:4], listener_stats_event_parse_num = 286331153
- UNPK[size:4], poll_update_rf_call_num = 286331153
- UNPK[size:4], poll_update_rf_parse_num = 286331153
- UNPK[size:4], poll_update_lte_call_num = 286331153
- UNPK[size:4], poll_update_lte_parse_num = 286331153
- UNPK[size:4], poll_update_nr5g_call_num = 286331153
- UNPK[size:4], poll_update_nr5g_parse_num = 286331153
- -------- stats cm info end, cnt(127) --------
- -------- stats uim info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- -------- stats uim info end, cnt(137) --------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== The fields of version 1, and what more of the record is there
| [debug_info]
| record = '01 01 0100000000000000 11*300'
$ rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
- UNPK[size:1], version = 1
- -------- stats main info start --------
- UNPK[size:1], g_modem_stats_feature_enable_status = 1
- UNPK[size:8], g_unpk_version_not_support_num = 1
- UNPK[size:8], g_modem_stats_cmd_ok_count = 1229782938247303441
- UNPK[size:8], g_modem_stats_cmd_fail_count = 1229782938247303441
- -------- stats main info end, cnt(26) --------
- -------- stats diag info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:4], listener_event_num = 286331153
- UNPK[size:1], listener_event_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- UNPK[size:4], listener_log_num = 286331153
- UNPK[size:1], listener_log_state = 17
- UNPK[size:8], listener_log_call_num = 1229782938247303441
- UNPK[size:8], listener_log_parse_num = 1229782938247303441
- UNPK[size:4], poll_update_call_num = 286331153
- UNPK[size:4], poll_update_parse_num = 286331153
- UNPK[size:8], listener_event_callback_num = 1229782938247303441
- UNPK[size:8], listener_log_callback_num = 1229782938247303441
- UNPK[size:4], lte_cell_id_invalid_num = 286331153
- UNPK[size:4], nr5g_cell_id_invalid_num = 286331153
- -------- stats diag info end, cnt(93) --------
- -------- stats cm info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_call_event_call_num = 286331153
- UNPK[size:4], listener_call_event_parse_num = 286331153
- UNPK[size:4], listener_subs_event_call_num = 286331153
- UNPK[size:4], listener_subs_event_parse_num = 286331153
- UNPK[size:4], listener_ss_event_call_num = 286331153
- UNPK[size:4], listener_ss_event_parse_num = 286331153
- UNPK[size:4], listener_stats_event_call_num = 286331153
- UNPK[size:4], listener_stats_event_parse_num = 286331153
- UNPK[size:4], poll_update_rf_call_num = 286331153
- UNPK[size:4], poll_update_rf_parse_num = 286331153
- UNPK[size:4], poll_update_lte_call_num = 286331153
- UNPK[size:4], poll_update_lte_parse_num = 286331153
- UNPK[size:4], poll_update_nr5g_call_num = 286331153
- UNPK[size:4], poll_update_nr5g_parse_num = 286331153
- -------- stats cm info end, cnt(151) --------
- -------- stats uim info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- -------- stats uim info end, cnt(161) --------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== The fields of version 2, and what more of the record is there
| [debug_info]
| record = '02 01 0100000000000000 11*300'
$ rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
- UNPK[size:1], version = 2
- -------- stats main info start --------
- UNPK[size:1], g_modem_stats_feature_enable_status = 1
- UNPK[size:8], g_unpk_version_not_support_num = 1
- UNPK[size:8], g_modem_stats_cmd_ok_count = 1229782938247303441
- UNPK[size:8], g_modem_stats_cmd_fail_count = 1229782938247303441
- UNPK[size:8], hydra_system_heapi_mem_max_num = 1229782938247303441
- UNPK[size:8], hydra_system_heapi_mem_cur_num = 1229782938247303441
- UNPK[size:4], modem_statsi_cmd_q_count = 286331153
- UNPK[size:4], modem_statsi_cmd_free_q_count = 286331153
- -------- stats main info end, cnt(50) --------
- -------- stats diag info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:4], listener_event_num = 286331153
- UNPK[size:1], listener_event_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- UNPK[size:4], listener_log_num = 286331153
- UNPK[size:1], listener_log_state = 17
- UNPK[size:8], listener_log_call_num = 1229782938247303441
- UNPK[size:8], listener_log_parse_num = 1229782938247303441
- UNPK[size:4], poll_update_call_num = 286331153
- UNPK[size:4], poll_update_parse_num = 286331153
- UNPK[size:8], listener_event_callback_num = 1229782938247303441
- UNPK[size:8], listener_log_callback_num = 1229782938247303441
- UNPK[size:4], lte_cell_id_invalid_num = 286331153
- UNPK[size:4], nr5g_cell_id_invalid_num = 286331153
- UNPK[size:4], event_duration_ms_max = 286331153
- UNPK[size:4], log_duration_ms_max = 286331153
- UNPK[size:4], do_duration_ms_max = 286331153
- UNPK[size:4], debug_call_num = 286331153
- UNPK[size:4], debug_parse_num = 286331153
- -------- stats diag info end, cnt(137) --------
- -------- stats cm info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_call_event_call_num = 286331153
- UNPK[size:4], listener_call_event_parse_num = 286331153
- UNPK[size:4], listener_subs_event_call_num = 286331153
- UNPK[size:4], listener_subs_event_parse_num = 286331153
- UNPK[size:4], listener_ss_event_call_num = 286331153
- UNPK[size:4], listener_ss_event_parse_num = 286331153
- UNPK[size:4], listener_stats_event_call_num = 286331153
- UNPK[size:4], listener_stats_event_parse_num = 286331153
- UNPK[size:4], poll_update_rf_call_num = 286331153
- UNPK[size:4], poll_update_rf_parse_num = 286331153
- UNPK[size:4], poll_update_lte_call_num = 286331153
- UNPK[size:4], poll_update_lte_parse_num = 286331153
- UNPK[size:4], poll_update_nr5g_call_num = 286331153
- UNPK[size:4], poll_update_nr5g_parse_num = 286331153
- -------- stats cm info end, cnt(195) --------
- -------- stats uim info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- -------- stats uim info end, cnt(205) --------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== The fields of version 3, and what more of the record is there
| [debug_info]
| record = '03 01 0100000000000000 11*300'
$ rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
- UNPK[size:1], version = 3
- -------- stats main info start --------
- UNPK[size:1], g_modem_stats_feature_enable_status = 1
- UNPK[size:8], g_unpk_version_not_support_num = 1
- UNPK[size:8], g_modem_stats_cmd_ok_count = 1229782938247303441
- UNPK[size:8], g_modem_stats_cmd_fail_count = 1229782938247303441
- UNPK[size:8], hydra_system_heapi_mem_max_num = 1229782938247303441
- UNPK[size:8], hydra_system_heapi_mem_cur_num = 1229782938247303441
- UNPK[size:4], modem_statsi_cmd_q_count = 286331153
- UNPK[size:4], modem_statsi_cmd_free_q_count = 286331153
- -------- stats main info end, cnt(50) --------
- -------- stats diag info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:4], listener_event_num = 286331153
- UNPK[size:1], listener_event_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- UNPK[size:4], listener_log_num = 286331153
- UNPK[size:1], listener_log_state = 17
- UNPK[size:8], listener_log_call_num = 1229782938247303441
- UNPK[size:8], listener_log_parse_num = 1229782938247303441
- UNPK[size:4], poll_update_call_num = 286331153
- UNPK[size:4], poll_update_parse_num = 286331153
- UNPK[size:8], listener_event_callback_num = 1229782938247303441
- UNPK[size:8], listener_log_callback_num = 1229782938247303441
- UNPK[size:4], lte_cell_id_invalid_num = 286331153
- UNPK[size:4], nr5g_cell_id_invalid_num = 286331153
- UNPK[size:4], event_duration_ms_max = 286331153
- UNPK[size:4], log_duration_ms_max = 286331153
- UNPK[size:4], do_duration_ms_max = 286331153
- UNPK[size:4], debug_call_num = 286331153
- UNPK[size:4], debug_parse_num = 286331153
- UNPK[size:4], cust_event_call_num = 286331153
- UNPK[size:4], cust_event_parse_num = 286331153
- -------- stats diag info end, cnt(145) --------
- -------- stats cm info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_call_event_call_num = 286331153
- UNPK[size:4], listener_call_event_parse_num = 286331153
- UNPK[size:4], listener_subs_event_call_num = 286331153
- UNPK[size:4], listener_subs_event_parse_num = 286331153
- UNPK[size:4], listener_ss_event_call_num = 286331153
- UNPK[size:4], listener_ss_event_parse_num = 286331153
- UNPK[size:4], listener_stats_event_call_num = 286331153
- UNPK[size:4], listener_stats_event_parse_num = 286331153
- UNPK[size:4], poll_update_rf_call_num = 286331153
- UNPK[size:4], poll_update_rf_parse_num = 286331153
- UNPK[size:4], poll_update_lte_call_num = 286331153
- UNPK[size:4], poll_update_lte_parse_num = 286331153
- UNPK[size:4], poll_update_nr5g_call_num = 286331153
- UNPK[size:4], poll_update_nr5g_parse_num = 286331153
- -------- stats cm info end, cnt(203) --------
- -------- stats uim info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- -------- stats uim info end, cnt(213) --------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== A version that nobody knows has the fields of the latest
| [debug_info]
| record = 'C8 01 0100000000000000 11*300'
$ rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
- UNPK[size:1], version = 200
- -------- stats main info start --------
- UNPK[size:1], g_modem_stats_feature_enable_status = 1
- UNPK[size:8], g_unpk_version_not_support_num = 1
- UNPK[size:8], g_modem_stats_cmd_ok_count = 1229782938247303441
- UNPK[size:8], g_modem_stats_cmd_fail_count = 1229782938247303441
- UNPK[size:8], hydra_system_heapi_mem_max_num = 1229782938247303441
- UNPK[size:8], hydra_system_heapi_mem_cur_num = 1229782938247303441
- UNPK[size:4], modem_statsi_cmd_q_count = 286331153
- UNPK[size:4], modem_statsi_cmd_free_q_count = 286331153
- UNPK[size:4], g_hydra_log_mask = 286331153
- UNPK[size:4], g_hydra_log_stats_mask = 286331153
- -------- stats main info end, cnt(58) --------
- -------- stats diag info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:4], listener_event_num = 286331153
- UNPK[size:1], listener_event_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- UNPK[size:4], listener_log_num = 286331153
- UNPK[size:1], listener_log_state = 17
- UNPK[size:8], listener_log_call_num = 1229782938247303441
- UNPK[size:8], listener_log_parse_num = 1229782938247303441
- UNPK[size:4], poll_update_call_num = 286331153
- UNPK[size:4], poll_update_parse_num = 286331153
- UNPK[size:8], listener_event_callback_num = 1229782938247303441
- UNPK[size:8], listener_log_callback_num = 1229782938247303441
- UNPK[size:4], lte_cell_id_invalid_num = 286331153
- UNPK[size:4], nr5g_cell_id_invalid_num = 286331153
- UNPK[size:4], event_duration_ms_max = 286331153
- UNPK[size:4], log_duration_ms_max = 286331153
- UNPK[size:4], do_duration_ms_max = 286331153
- UNPK[size:4], debug_call_num = 286331153
- UNPK[size:4], debug_parse_num = 286331153
- UNPK[size:4], cust_event_call_num = 286331153
- UNPK[size:4], cust_event_parse_num = 286331153
- -------- stats diag info end, cnt(153) --------
- -------- stats cm info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_call_event_call_num = 286331153
- UNPK[size:4], listener_call_event_parse_num = 286331153
- UNPK[size:4], listener_subs_event_call_num = 286331153
- UNPK[size:4], listener_subs_event_parse_num = 286331153
- UNPK[size:4], listener_ss_event_call_num = 286331153
- UNPK[size:4], listener_ss_event_parse_num = 286331153
- UNPK[size:4], listener_stats_event_call_num = 286331153
- UNPK[size:4], listener_stats_event_parse_num = 286331153
- UNPK[size:4], poll_update_rf_call_num = 286331153
- UNPK[size:4], poll_update_rf_parse_num = 286331153
- UNPK[size:4], poll_update_lte_call_num = 286331153
- UNPK[size:4], poll_update_lte_parse_num = 286331153
- UNPK[size:4], poll_update_nr5g_call_num = 286331153
- UNPK[size:4], poll_update_nr5g_parse_num = 286331153
- -------- stats cm info end, cnt(211) --------
- -------- stats uim info start --------
- UNPK[size:1], init_state = 17
- UNPK[size:1], listener_state = 17
- UNPK[size:4], listener_event_call_num = 286331153
- UNPK[size:4], listener_event_parse_num = 286331153
- -------- stats uim info end, cnt(221) --------
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== Statistics that are on and know all versions: no list is asked for
| [debug_info]
| record = '02 05 0000000000000000 1112131415161718 2122232425262728'
$ rbk 7 1 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x0
- UNPK[size:1], version = 2
- UNPK[size:1], modem_stats_feature_enable_status = 5
- UNPK[size:8], version_not_support_num = 0
- UNPK[size:8], modem_stats_cmd_ok_count = 1735880461161533969
- UNPK[size:8], modem_stats_cmd_fail_count = 2893323226570760737
- ===========================================
- ================ SUCCES ===================
- ===========================================
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== Statistics that are off, whatever they know
| [debug_info]
| record = '02 00 0300000000000000 1112131415161718 2122232425262728'
$ rbk 7 1 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x0
- UNPK[size:1], version = 2
- UNPK[size:1], modem_stats_feature_enable_status = 0
- UNPK[size:8], version_not_support_num = 3
- UNPK[size:8], modem_stats_cmd_ok_count = 1735880461161533969
- UNPK[size:8], modem_stats_cmd_fail_count = 2893323226570760737
- ===========================================
- ================ CLOSED ===================
- ===========================================
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== Logs that want an upgrade
| [debug_info]
| record = '02 01 0300000000000000 1112131415161718 2122232425262728'
| logs = [0xB063, 0x00A1]
$ rbk 7 1 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x0
- UNPK[size:1], version = 2
- UNPK[size:1], modem_stats_feature_enable_status = 1
- UNPK[size:8], version_not_support_num = 3
- UNPK[size:8], modem_stats_cmd_ok_count = 1735880461161533969
- UNPK[size:8], modem_stats_cmd_fail_count = 2893323226570760737
- UNPK[size:2], log_num = 2
- ===========================================
- ================= FAIL ====================
- ===========================================
- Diag logs to be upgraded[num:2]:
- log_id[0]: 0xB063
- log_id[1]: 0x00A1
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:1B 00*549

== A record that the modem refuses
| [[fault]]
| service = 'extended'
| prefix = '14'
| action = 'result'
| code = -5
$ rbk 7 1 1
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1
1 ^ qmi response fail, result = 0, rsp.result = -5
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== A list that the modem refuses
| [debug_info]
| record = '02 01 0300000000000000 1112131415161718 2122232425262728'
| [[fault]]
| service = 'extended'
| prefix = '1B'
| action = 'result'
| code = -6
$ rbk 7 1 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x0
- UNPK[size:1], version = 2
- UNPK[size:1], modem_stats_feature_enable_status = 1
- UNPK[size:8], version_not_support_num = 3
- UNPK[size:8], modem_stats_cmd_ok_count = 1735880461161533969
- UNPK[size:8], modem_stats_cmd_fail_count = 2893323226570760737
1 velmor_rbk_hydra_test.cpp velmor_modem_stats_support_status_check: qmi response fail, result = 0, rsp_not_support.result = -6
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:1B 00*549

== A number of logs is believed, and what lies past the answer is 0
| [debug_info]
| record = '01 01 0100000000000000 11*300'
| [[fault]]
| service = 'extended'
| prefix = '1B'
| action = 'raw'
| bytes = '01 0400 00000000 02 0400 FC010000 10 2602 00*8 FFFF EE*540'
$ sh rbk 7 1 0 | tail -n 65536 | sed -n '1p;250,251p;$p'
- Diag logs to be upgraded[num:65535]:
- log_id[248]: 0xEEEE
- log_id[249]: 0x0000
- log_id[65534]: 0x0000

== A request for the record that fails
| [[fault]]
| service = 'extended'
| prefix = '14'
| action = 'raw'
| bytes = 'FF'
$ rbk 7 1 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x0
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: send msg sync failed:-1
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: velmor_common_qmi_req fail, REQUEST_ID_COMMON, result = -3, rsp.result = 0
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549

== A request for the list that fails
| [debug_info]
| record = '02 01 0300000000000000 1112131415161718 2122232425262728'
| [[fault]]
| service = 'extended'
| prefix = '1B'
| action = 'error'
| code = 52
$ rbk 7 1 0
2 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x0
- UNPK[size:1], version = 2
- UNPK[size:1], modem_stats_feature_enable_status = 1
- UNPK[size:8], version_not_support_num = 3
- UNPK[size:8], modem_stats_cmd_ok_count = 1735880461161533969
- UNPK[size:8], modem_stats_cmd_fail_count = 2893323226570760737
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 52 QMI service framework error. Check client
1 velmor_rbk_hydra_test.cpp velmor_modem_stats_support_status_check: velmor_common_qmi_req fail, result = -3, rsp_not_support.result = 0
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:14 00*549
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:1B 00*549

== Refusals reach nobody
$ rbk 7
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_do: note: Too few parameters, Pls refer to the following cmd:
@help 7
$ rbk 7 0
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_parsing_process: note: Too few parameters, Pls refer to the following cmd:
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_do: velmor_test_modem_stats_parsing_process FAIL
@help 7
$ rbk 7 1
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_get_debug_info: note: Too few parameters, Pls refer to the following cmd:
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_do: velmor_test_modem_stats_get_debug_info FAIL
@help 7
$ rbk 7 2 0
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_do: invalid type = 2
@help 7
$ rbk 7 -1 0
1 velmor_rbk_hydra_test.cpp velmor_test_modem_stats_do: invalid type = -1
@help 7

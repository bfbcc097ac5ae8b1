# Group 5, sub-command 10: the slot that a physical card and an eSIM share. The flows that go well; esim_fails.t has the rest.

== Power switches the slot, to the eSIM and back
$ rbk 5 10 3 0
- value=FAILED
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000 x2
$ rbk 5 10 5 0
- value=FAILED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
$ inside velmor_rbk_test_cmn.cpp velmor_extend_cmn.cpp rbk 5 10 1 1
4 velmor_rbk_test_cmn.cpp velmor_esim_sku_match: hw support esim
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: switch to eSIM
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_esim_request_uicc_power_ex: velmor_uim_request_uicc_power_ex try init_uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex power down sim
4 ^ uicc_power_ex res = 0, failed_cnt = 0
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: POWER_DOWN_UIM2 res = 0
4 velmor_extend_cmn.cpp velmor_esim_request_uicc_power_ex: velmor_uim_request_uicc_power_ex uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex power up sim, ignore hotswap = 1 
4 ^ uicc_power_ex res = 0, failed_cnt = 0
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: POWER_UP_UIM2 res = 0
4 ^ try get eid loop = 0
4 velmor_extend_cmn.cpp velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client 0xN
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: try get eid loop = 1
4 velmor_extend_cmn.cpp velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client 0xN
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: try get eid loop = 2
4 velmor_extend_cmn.cpp velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client 0xN
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: try get eid loop = 3
4 velmor_extend_cmn.cpp velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client 0xN
4 velmor_rbk_test_cmn.cpp is_eid_valid: check whether eid valid
4 ^ eid validate pass
4 velmor_rbk_test_cmn.cpp save_eid_to_efs: efs read failed and try save it. error_code : -2
4 ^ save eid efs result = 0
4 ^ save eid successfully, set IS_EID_SAVE TRUE
- eID=89049032123451234512345678901235
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0031 3000 ms 01:02 10:01 11:00
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:04010000282F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656964 00*505
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF00282F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656964 00*63 10000000100000000000000089049032123451234512345678901235 00*414
! usleep 100000 x4
$ inside velmor_rbk_test_cmn.cpp velmor_extend_cmn.cpp rbk 5 10 3 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: velmor get eid
4 ^ try get eid loop = 0
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_uim_request_eid: velmor_uim_request_eid try init_uim_qmi_client 0xN
4 ^ velmor_uim_request_eid uim_qmi_client 0xN
- eID=89049032123451234512345678901235
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000
$ inside velmor_rbk_test_cmn.cpp velmor_extend_cmn.cpp rbk 5 10 4 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: try get simcard status
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_uim_get_card_status: velmor_uim_get_card_status try init_uim_qmi_client 0xN
4 ^ velmor_uim_get_card_status uim_qmi_client 0xN
4 ^ velmor_uim_get_card_status check response
4 ^ SIM[0] State = 1
4 ^ SIM[1] State = 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: card_status, [1, 1]
4 velmor_rbk_test_cmn.cpp map_sim_state: map_sim_state ...
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ show modem/card/2/profiles
- 989420103254769810F2
$ inside velmor_rbk_test_cmn.cpp velmor_extend_cmn.cpp rbk 5 10 5 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: Start eUICC Reset
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_uim_open_channel: velmor_uim_open_channel try init_uim_qmi_client 0xN
4 ^ velmor_uim_open_channel uim_qmi_client 0xN
4 ^ velmor_uim_open_channel successfully
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: velmor_uim_open_channel res = 0, channel_id = 1
4 velmor_extend_cmn.cpp velmor_uim_send_apdu: velmor_uim_close_channel uim_qmi_client 0xN
4 ^ velmor_uim_send_apdu apdu_len = 13
4 ^ velmor_uim_send_apdu successfully
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: velmor_uim_send_apdu res = 0
4 ^ apdu=08bf34038001009000
4 ^ velmor_uim_send_apdu, delete profile successfully.
4 velmor_extend_cmn.cpp velmor_uim_close_channel: velmor_uim_close_channel uim_qmi_client 0xN
4 ^ velmor_uim_close_channel successfully
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: velmor_uim_close_channel res = 0
- value=SUCCEED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
> 0x000B 0x003B 3000 ms 01:02 02:0D0080E2910007BF3404820205E000 10:01 11:01
> 0x000B 0x003F 3000 ms 01:02 11:01 13:00
$ show modem/card/2/profiles
- absent
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 5 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: Start eUICC Reset
4 ^ velmor_uim_open_channel res = 0, channel_id = 1
4 ^ velmor_uim_send_apdu res = 0
4 ^ apdu=08bf34038001019000
4 ^ velmor_uim_send_apdu, nothing to delete.
4 ^ velmor_uim_close_channel res = 0
- value=SUCCEED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
> 0x000B 0x003B 3000 ms 01:02 02:0D0080E2910007BF3404820205E000 10:01 11:01
> 0x000B 0x003F 3000 ms 01:02 11:01 13:00
$ inside velmor_rbk_test_cmn.cpp velmor_extend_cmn.cpp rbk 5 10 2 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: switch to SIM2
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_esim_request_uicc_power_ex: velmor_uim_request_uicc_power_ex try init_uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex power down sim
4 ^ uicc_power_ex res = 0, failed_cnt = 0
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: POWER_DOWN_UIM2 res = 0
4 velmor_extend_cmn.cpp velmor_esim_request_uicc_power_ex: velmor_uim_request_uicc_power_ex uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex power up sim, ignore hotswap = 0 
4 ^ uicc_power_ex res = 0, failed_cnt = 0
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: POWER_UP_UIM2 res = 0
4 ^ SIM2 Power Up successfully
- value=SUCCEED
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0031 3000 ms 01:02 10:00 11:00
$ rbk 5 10 3 0
- value=FAILED
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000 x2
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv/esim_eid
- 89049032123451234512345678901235
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv/esim_enable
- 00000000

== The product's name is compared with its case
$ rbk-prop set ro.product.name Zirconia
$ rbk 5 10 2 0
- value=SUCCEED
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0031 3000 ms 01:02 10:00 11:00

== Products with the word in their name switch by SIM type
$ rbk-prop set ro.product.name xzirconia_eea
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 1 1
4 velmor_rbk_test_cmn.cpp velmor_esim_sku_match: hw support esim
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: switch to eSIM
4 ^ card counts = 2
4 ^ switch to esim res = 0
4 ^ try get eid loop = 0
4 ^ try get eid loop = 1
4 ^ try get eid loop = 2
4 ^ try get eid loop = 3
4 velmor_rbk_test_cmn.cpp is_eid_valid: check whether eid valid
4 ^ eid validate pass
4 velmor_rbk_test_cmn.cpp save_eid_to_efs: efs read failed and try save it. error_code : -2
4 ^ save eid efs result = 0
4 ^ save eid successfully, set IS_EID_SAVE TRUE
- eID=89049032123451234512345678901235
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
> 0x000B 0x007A 3000 ms 01:020100000003000000
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:04010000282F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656964 00*505
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF00282F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656964 00*63 10000000100000000000000089049032123451234512345678901235 00*414
! usleep 100000 x4
$ rbk 5 10 3 0
- eID=89049032123451234512345678901235
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000
$ inside velmor_rbk_test_cmn.cpp velmor_extend_cmn.cpp rbk 5 10 2 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: switch to SIM2
4 ^ card counts = 2
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_setSimType: velmor_set_sim_type try init_uim_qmi_client 0xN
4 ^ velmor_set_sim_type uim_qmi_client 0xN
4 ^ Set_sim_type value is 1
@again 1
4 ^ velmor_set_sim_type res = 0 
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: switch to uim2 res = 0
4 ^ SIM2 Power Up successfully
- value=SUCCEED
> 0x000B 0x007A 3000 ms 01:020100000001000000
$ rbk 5 10 3 0
- value=FAILED
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000 x2

== A silent run leaves the answer alone, on the screen and in the log
env RBK_TRACE=
$ rbk-prop set persist.vendor.radio.adb_log_shell 65535
$ traced rbk 5 10 1 0
2 velmor_utils_cmn.cpp velmor_get_current_pid_info: function entry ------------->
2 ^ proc_pid_path: /proc/N/cmdline
2 ^ proc_pid_buf: RBK
2 ^ str_pid_name: rbk
2 ^ p_pid_info->p_name: rbk
2 ^ close fp
2 ^ p_id: N, p_name: rbk
2 ^ function exit <-------------
2 velmor_rbk_test_main.cpp velmor_modem_check_odm_white_list: VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(1), p_id: N, p_name: rbk
- eID=89049032123451234512345678901235
! usleep 100000 x4

== The second hardware has an eSIM too
env RBK_TRACE=
| nv.'0/6853' = '00*16 02'
$ rbk 5 10 1 1
- eID=89049032123451234512345678901235
! usleep 100000 x4

== The way back doesn't ask for the hardware
| nv.'0/6853' = '00*16 00'
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 1 1
4 velmor_rbk_test_cmn.cpp velmor_esim_sku_match: hw does not support esim
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
$ rbk 5 10 2 1
- value=SUCCEED
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0031 3000 ms 01:02 10:00 11:00

== Refused power is no failure
| fault = [
|   { service = 'uim', message = 0x0030, action = 'error', code = 25 },
|   { service = 'uim', message = 0x0031, action = 'error', code = 25 },
| ]
$ rbk 5 10 2 1
- value=SUCCEED
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0031 3000 ms 01:02 10:00 11:00

== An EID that stands in EFS is never replaced
env RBK_TRACE=
| efs.'1:/nv/item_files/modem/uim/uimdrv/esim_eid' = 'A1 B2'
$ rbk 5 10 1 1
- eID=89049032123451234512345678901235
! usleep 100000 x4
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv/esim_eid
- A1B2

== An EID that can't be saved is told all the same
env RBK_TRACE=
| fault = [ { service = 'extended', qmi_id = 2, prefix = '05 01', nth = 3, action = 'error', code = 3 } ]
$ rbk 5 10 1 1
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 3 QMI service framework error. Check client
- eID=89049032123451234512345678901235
! usleep 100000 x4
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv/esim_eid
- absent

== The last poll counts
env RBK_TRACE=
| card = [ {}, { eid = '89049032123451234512345678901235', eid_after = 29 } ]
$ rbk 5 10 1 1
- eID=89049032123451234512345678901235
! usleep 100000 x30

== Letters count by their code
env RBK_TRACE=
| card = [ {}, { eid = '89ABCDEF0123456789ABCDEF01234510' } ]
$ rbk 5 10 1 1
- eID=89abcdef0123456789abcdef01234510
! usleep 100000 x4

== An EID that is only read isn't checked, and asked for twice
| fault = [
|   { service = 'uim', message = 0x0065, nth = 1, action = 'error', code = 25 },
|   { service = 'uim', message = 0x0065, action = 'raw', bytes = '02 0400 00000000 10 1100 10 F0 00*15' },
| ]
$ rbk 5 10 3 1
- eID=f0000000000000000000000000000000
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000 x2

== States have their words
| card = [ { state = 'error' }, { state = 'absent' } ]
$ rbk 5 10 4 1
- ERROR,ABSENT
> 0x000B 0x002F 3000 ms 10:01
== A slot that isn't told of is unknown
| card = [ {} ]
$ rbk 5 10 4 1
- PRESENT,UNKNOWN
> 0x000B 0x002F 3000 ms 10:01
== So are both of a look that is refused
| fault = [ { service = 'uim', message = 0x002F, action = 'error', code = 52 } ]
$ rbk 5 10 4 1
- UNKNOWN,UNKNOWN
> 0x000B 0x002F 3000 ms 10:01

== The close doesn't decide of a good reset
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ put modem/card/2/side esim
| fault = [ { service = 'uim', message = 0x003F, action = 'error', code = 3 } ]
$ rbk 5 10 5 1
- value=SUCCEED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
> 0x000B 0x003B 3000 ms 01:02 02:0D0080E2910007BF3404820205E000 10:01 11:01
> 0x000B 0x003F 3000 ms 01:02 11:01 13:00

# Group 10: the modem's software configurations. The timers of 5 seconds run as they are unless a session says so.

== A refresh applies what is there and waits for nothing
| [[fault]]
| service = 'pdc'
| on = 'indication'
| action = 'silent'
env RBK_TEST_DIVISOR=1
$ inside rbk 10 0 3
4 velmor_mbn_utils.cpp velmor_refresh_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_refresh_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 3
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 0
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 pdc_utils.cpp pdc_init_ex: qmi_client_init succeeds for PDC
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 pdc_utils.cpp pdc_activate_config_ex: QMI_PDC_ACTIVATE_CONFIG_REQ_V01 begin, config_type: 1, activation_type: 1, sub_id: 0, slot_id: 0
4 ^ QMI_PDC_ACTIVATE_CONFIG_REQ_V01 end, config_type: 1, sub_id: 0
4 ^ There is not the response to PDC_CONFIG_TYPE_MODEM_PLATFORM_V01
4 velmor_mbn_utils.cpp velmor_refresh_mbn: SUB_0 pdc_activate_config_ex ret 0
4 pdc_utils.cpp pdc_activate_config_ex: QMI_PDC_ACTIVATE_CONFIG_REQ_V01 begin, config_type: 1, activation_type: 1, sub_id: 1, slot_id: 1
4 ^ QMI_PDC_ACTIVATE_CONFIG_REQ_V01 end, config_type: 1, sub_id: 1
4 ^ There is not the response to PDC_CONFIG_TYPE_MODEM_PLATFORM_V01
4 velmor_mbn_utils.cpp velmor_refresh_mbn: SUB_1 pdc_activate_config_ex ret 0
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_refresh_sw_mbn: function exit <-------------
> 0x0024 0x0027 10000 ms 01:01000000 11:01000000 12:00000000 13:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:01000000 12:01000000 13:01000000

== A refresh that fails lets the other subscription's run
| [[fault]]
| service = 'pdc'
| message = 0x27
| nth = 1
| action = 'raw'
| bytes = 'FF'
env RBK_TEST_DIVISOR=1
$ inside velmor_mbn_utils.cpp rbk 10 0 3
4 velmor_mbn_utils.cpp velmor_refresh_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_refresh_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 3
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 0
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
1 pdc_utils.cpp pdc_activate_config_ex: qmi send message error for activate_config, errno: -1
4 velmor_mbn_utils.cpp velmor_refresh_mbn: SUB_0 pdc_activate_config_ex ret -1
4 ^ SUB_1 pdc_activate_config_ex ret 0
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_refresh_sw_mbn: function exit <-------------
> 0x0024 0x0027 10000 ms 01:01000000 11:01000000 12:00000000 13:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:01000000 12:01000000 13:01000000

# Whether a timer starts before an answer is there is open: the waits are left out.
== A reactivation takes the configuration off and puts the same one back
| [pdc]
| indication_ms = 1
| [[pdc.config]]
| id = 'A1A2'
| [pdc.sub0]
| active = 'A1A2'
| pending = 'BB'
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ inside velmor_mbn_utils.cpp rbk 10 1 1
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 1
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val 0
4 velmor_mbn_utils.cpp velmor_mbn_deactivate_config: function entry ------------->
4 ^ pdc_deactivate_config_ex, ret_pdc: 0, ret_sync: 0, sub: 0, config_type: 1
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_select_config_ex ret_val 0
4 ^ SUB_0 pdc_activate_config_ex ret_val 0
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:0100000002A1A2 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000
$ show modem/pdc/sub0/active
- A1A2
$ show modem/pdc/sub0/pending
- absent
$ text modem/marks/nv_sync
- at TIME

== The second subscription's reactivation leaves the first alone
| [[pdc.config]]
| id = 'A1A2'
| [pdc.sub0]
| active = 'A1A2'
| pending = 'BB'
| [pdc.sub1]
| active = 'C1'
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ rbk 10 1 2
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
> 0x0024 0x0022 10000 ms 01:01000000 11:01000000
> 0x0024 0x002B 10000 ms 01:01000000 11:01000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:0100000001C1 11:01000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:01000000 13:01000000
$ show modem/pdc/sub0/pending
- BB
$ show modem/pdc/sub1/active
- C1

== Both are reactivated, one after the other
| [pdc]
| indication_ms = 1
| [pdc.sub0]
| active = 'C1'
| [pdc.sub1]
| active = 'C2'
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ rbk 10 1 3
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:0100000001C1 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000
> 0x0024 0x0022 10000 ms 01:01000000 11:01000000
> 0x0024 0x002B 10000 ms 01:01000000 11:01000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:0100000001C2 11:01000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:01000000 13:01000000

== Nothing active ends a reactivation before the other subscription
| [pdc.sub0]
| pending = 'AABB'
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ inside velmor_mbn_utils.cpp rbk 10 1 3
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 3
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val -6
1 ^ SUB_0 pdc_get_current_config_ex fail
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
$ show modem/pdc/sub0/pending
- AABB

== A refused look at the selection ends it too
| [[fault]]
| service = 'pdc'
| message = 0x22
| action = 'error'
| code = 3
$ rbk 10 1 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
1 pdc_utils.cpp pdc_get_current_config_ex: qmi send message error for get_sel_configs, errno: 0 40
1 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex fail
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000

== What fails behind it doesn't: a deactivation and a selection that aren't understood
| [[fault]]
| service = 'pdc'
| message = 0x2B
| action = 'raw'
| bytes = 'FF'
| [[fault]]
| service = 'pdc'
| message = 0x23
| action = 'raw'
| bytes = 'FF'
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ inside velmor_mbn_utils.cpp rbk 10 1 1
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function entry ------------->
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: function entry ------------->
4 ^ mbn_type 1
4 ^ sub_mask 1
4 velmor_mbn_utils.cpp velmor_mbn_init: function entry ------------->
4 ^ start velmor pdc init, g_velmor_pdc_init_status = -1, force_init = 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
4 velmor_mbn_utils.cpp velmor_mbn_init: function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex ret_val 0
4 velmor_mbn_utils.cpp velmor_mbn_deactivate_config: function entry ------------->
1 pdc_utils.cpp pdc_deactivate_config_ex: qmi send mssage error for deactivate_config, errno: -1
4 velmor_mbn_utils.cpp velmor_mbn_deactivate_config: pdc_deactivate_config_ex, ret_pdc: -1, ret_sync: 0, sub: 0, config_type: 1
4 ^ function exit <-------------
1 pdc_utils.cpp pdc_select_config_ex: qmi send message error for set_selected_config, errno: -1
4 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_select_config_ex ret_val -1
4 ^ SUB_0 pdc_activate_config_ex ret_val 0
4 ^ function exit <-------------
4 velmor_mbn_utils.cpp velmor_reactivate_sw_mbn: function exit <-------------
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:01000000146A1F0352904EC7182B33758DA009E45C61D2F710 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000

== Nor does a selection that the modem refuses, which counts as none
| [pdc]
| indication_ms = 1
| [[fault]]
| service = 'pdc'
| message = 0x23
| on = 'indication'
| action = 'raw'
| bytes = '01 0200 1000'
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ rbk 10 1 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
1 pdc_utils.cpp qmi_pdc_select_config_ind_hdlr_ex: QMI error, error code: 16
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:01000000146A1F0352904EC7182B33758DA009E45C61D2F710 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000

== A modem that is made silent
| [pdc]
| indication_ms = 1
env RBK_TEST_DIVISOR=2
$ rbk 10 30 1
$ rbk-prop get persist.radio.all_pdc_no_rsp_count
- 1
$ rbk 10 1 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
1 pdc_utils.cpp velmor_mbn_debug_all_pdc_no_rsp_count_check: NOTICE!!! PROPERTY_DEBUG_ALL_PDC_NO_RSP_COUNT(1) is running
1 pdc_utils.cpp qmi_pdc_unsol_ind_cb_ex: velmor_mbn_debug_all_pdc_no_rsp_count_check fail
1 velmor_mbn_utils.cpp velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex fail
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
! timer_settime 5.000000000
! timer_settime 0.000000000
$ rbk 10 30 0
$ rbk-prop get persist.radio.all_pdc_no_rsp_count
- 0
env RBK_TEST_DIVISOR=1
env RBK_TEST_CALLS=
$ rbk 10 1 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
> 0x0024 0x0022 10000 ms 01:01000000 11:00000000
> 0x0024 0x002B 10000 ms 01:01000000 11:00000000
> 0xFFE4 0x0002 3000 ms 01:04000000 02:00020000 10:020000000000000023 00*541
> 0x0024 0x0023 10000 ms 01:01000000146A1F0352904EC7182B33758DA009E45C61D2F710 11:00000000
> 0x0024 0x0027 10000 ms 01:01000000 11:00000000 12:00000000 13:00000000

== A service that isn't there
| [modem]
| services = ['extended']
env RBK_TEST_DIVISOR=10000
$ rbk 10 1 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
1 pdc_utils.cpp pdc_init_ex: qmi_client_init returned failure (-3) for PDC, retry times 0
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 1
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 2
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 3
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 4
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 5
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 6
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 7
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 8
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 9
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 10
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 11
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 12
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 13
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 14
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 15
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 16
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 17
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 18
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 19
1 velmor_mbn_utils.cpp velmor_mbn_init: pdc init failed, g_velmor_pdc_init_status = -1
1 velmor_mbn_utils.cpp velmor_reactivate_mbn: pdc init failed, do nothing
! sleep 5 x20
$ rbk 10 0 1
1 pdc_utils.cpp qmi_pdc_init_pdc_info: pdc_info init done
1 pdc_utils.cpp pdc_init_ex: qmi_client_init returned failure (-3) for PDC, retry times 0
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 1
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 2
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 3
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 4
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 5
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 6
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 7
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 8
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 9
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 10
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 11
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 12
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 13
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 14
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 15
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 16
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 17
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 18
1 ^ qmi_client_init returned failure (-3) for PDC, retry times 19
1 velmor_mbn_utils.cpp velmor_mbn_init: pdc init failed, g_velmor_pdc_init_status = -1
1 velmor_mbn_utils.cpp velmor_refresh_mbn: pdc init failed, do nothing
! sleep 5 x20

== Refusals reach nobody
$ rbk 10 0
1 velmor_rbk_mbn.cpp velmor_test_mbn_do: note: Too few parameters, Pls refer to the following cmd:
@help 10
$ rbk 10 7 1
1 velmor_rbk_mbn.cpp velmor_test_mbn_do: invalid mbn_i = 7
@help 10
$ rbk 10 0 0
1 velmor_mbn_utils.cpp velmor_refresh_mbn: sub_mask is out of range
$ rbk 10 0 4
1 velmor_mbn_utils.cpp velmor_refresh_mbn: sub_mask is out of range
$ rbk 10 1 -1
1 velmor_mbn_utils.cpp velmor_reactivate_mbn: sub_mask is out of range
$ rbk 10 1 0
1 velmor_mbn_utils.cpp velmor_reactivate_mbn: sub_mask is out of range

# The scenarios of cards that come with the programs, each with the commands of its head.

== An EID that comes late comes in time
env RBK_TRACE=
scenario sim-not-ready
$ rbk 5 10 1 1
- eID=89049032123451234512345678901235
! usleep 100000 x26

== No channel is left
env RBK_TRACE=
scenario three-channels
$ rbk 5 10 1 0
- eID=89049032123451234512345678901235
! usleep 100000 x4
$ inside velmor_extend_cmn.cpp rbk 5 10 5 1
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_uim_open_channel: velmor_uim_open_channel try init_uim_qmi_client 0xN
4 ^ velmor_uim_open_channel uim_qmi_client 0xN
4 ^ velmor_uim_open_channel failed
- value=FAILED
$ show modem/card/2/profiles
- 989420103254769810F2

== No application is there
env RBK_TRACE=
scenario euicc-refuses-application
$ rbk 5 10 1 0
- eID=89049032123451234512345678901235
! usleep 100000 x4
$ inside velmor_extend_cmn.cpp rbk 5 10 5 1
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_uim_open_channel: velmor_uim_open_channel try init_uim_qmi_client 0xN
4 ^ velmor_uim_open_channel uim_qmi_client 0xN
4 ^ velmor_uim_open_channel failed
- value=FAILED

== The reset is refused
env RBK_TRACE=
scenario euicc-refuses-reset
$ rbk 5 10 1 0
- eID=89049032123451234512345678901235
! usleep 100000 x4
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 5 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: Start eUICC Reset
4 ^ velmor_uim_open_channel res = 0, channel_id = 1
4 ^ velmor_uim_send_apdu res = 0
4 ^ apdu=026985000000000000
4 ^ velmor_uim_send_apdu, apdu rsp check failed.
- value=FAILED
$ show modem/card/2/profiles
- 989420103254769810F2

== A wrong EID is told, and not saved
env RBK_TRACE=
scenario eid-fails-check
$ rbk 5 10 1 1
- value=FAILED - 89049032123451234512345678901253
! usleep 100000 x4
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv
- esim_enable

== The card is pulled during the switch, and pushed again
env RBK_TRACE=
scenario card-pulled
$ rbk 5 10 4 0
- PRESENT,PRESENT
$ rbk 5 10 2 0
- value=SUCCEED
$ rbk 5 10 4 0
- PRESENT,ABSENT
$ rbk 5 3 1 0 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_card_status_set: velmor_cmn_card_status_set
- param(cnt: 3): 1 0 1
2 velmor_rbk_test_cmn.cpp velmor_cmn_cmd_send: velmor_cmn_cmd_send, t: 57, l: 12
2 ^ result = 0, rsp.result = 0
- data len(8)
- data: 39 00 00 00 00 00 00 00
$ rbk 5 10 4 0
- PRESENT,PRESENT

== The service vanishes in mid-request, and is found again
scenario service-vanishes
$ sh rbk 5 10 1 1 | grep -o 'SSR_Detected, try recovery\|^eID=.*'
- SSR_Detected, try recovery
- eID=89049032123451234512345678901235

== A late answer is nobody's
env RBK_TRACE=
scenario answer-after-deadline
env RBK_TEST_DIVISOR=1
$ inside velmor_extend_cmn.cpp rbk 5 10 1 1
4 velmor_extend_cmn.cpp init_uim_qmi_client: init_uim_qmi_client 0xN
4 velmor_extend_cmn.cpp velmor_esim_request_uicc_power_ex: velmor_uim_request_uicc_power_ex try init_uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex power down sim
4 ^ uicc_power_ex res = 0, failed_cnt = 0
4 ^ velmor_uim_request_uicc_power_ex uim_qmi_client 0xN
4 ^ velmor_uim_request_uicc_power_ex power up sim, ignore hotswap = 1 
4 ^ uicc_power_ex res = 0, failed_cnt = 0
4 velmor_extend_cmn.cpp velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client 0xN
4 ^ send msg sync client error = -3
4 ^ velmor_uim_request_eid uim_qmi_client 0xN
@again 2
- eID=89049032123451234512345678901235
! usleep 100000 x4

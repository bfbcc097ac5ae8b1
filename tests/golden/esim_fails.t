# Group 5, sub-command 10: what goes wrong with the eSIM, told in one line.

== Refusals
$ rbk 5 10
1 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: invalid input
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(-1)
@help 5
$ rbk 5 10 1
1 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: invalid input
1 velmor_rbk_test_cmn.cpp velmor_test_cmn_do: note: Error happen! error_code(-1)
@help 5
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 0 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: invalid input skip
- value=FAILED
$ rbk 5 10 6 0
- value=FAILED
$ rbk 5 10 -1 0
- value=FAILED

== Hardware of another kind
| nv.'0/6853' = '00*16 03'
$ rbk 5 10 1 1
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
== Hardware that can't be read
| fault = [ { service = 'extended', qmi_id = 1, action = 'error', code = 3 } ]
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 1 1
1 velmor_extend_api.cpp velmor_extend_qmi_send_sync: 3 QMI service framework error. Check client
4 velmor_rbk_test_cmn.cpp velmor_esim_sku_match: read nv6853 failed
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544

== No power down
| modem.restart_ms = 20
| fault = [ { service = 'uim', message = 0x0030, action = 'down' } ]
$ rbk 5 10 1 1
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0030 3000 ms 01:02
$ rbk 5 10 2 0
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0030 3000 ms 01:02

== No power up: the file of the switch stands before the request, and the slot stays down until the next run
| modem.restart_ms = 20
| fault = [ { service = 'uim', message = 0x0031, action = 'down' } ]
$ rbk 5 10 1 1
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0031 3000 ms 01:02 10:01 11:00
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv/esim_enable
- 01000000
$ rbk 5 10 4 0
- PRESENT,ERROR
> 0x000B 0x002F 3000 ms 10:01
$ rbk 5 10 3 0
- value=FAILED
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000 x2
$ rbk 5 10 2 0
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 04000000040000000000000001 00*429
> 0x000B 0x0030 3000 ms 01:02
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437
> 0x000B 0x0031 3000 ms 01:02 10:00 11:00
env RBK_SCENARIO=
env RBK_TRACE=
$ rbk 5 10 1 0
- eID=89049032123451234512345678901235
! usleep 100000 x4

== No power without its file
| fault = [ { service = 'extended', qmi_id = 2, prefix = '05 01', action = 'result', code = -28 } ]
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 1 1
4 velmor_rbk_test_cmn.cpp velmor_esim_sku_match: hw support esim
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: switch to eSIM
4 ^ POWER_DOWN_UIM2 res = -1
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
> 0xFFE4 0x0002 3000 ms 01:02000000 02:20020000 10:0501FF002B2F6E762F6974656D5F66696C65732F6D6F64656D2F75696D2F75696D6472762F6573696D5F656E61626C65 00*60 0400000004 00*437

== No SIM type
$ rbk-prop set ro.product.name zirconia
| modem.restart_ms = 20
| fault = [ { service = 'uim', message = 0x007A, action = 'down' } ]
$ rbk 5 10 1 1
- value=FAILED
> 0xFFE4 0x0002 3000 ms 01:01000000 02:AC010000 10:01000000C51A 00*544
> 0x000B 0x007A 3000 ms 01:020100000003000000
$ rbk 5 10 2 1
- value=FAILED
> 0x000B 0x007A 3000 ms 01:020100000001000000

== Polls end after three seconds
env RBK_TRACE=
| card = [ {}, { eid = '89049032123451234512345678901235', eid_after = 30 } ]
$ rbk 5 10 1 1
- value=FAILED
! usleep 100000 x30

== A card without an eUICC has no EID, and a reader of it asks twice
env RBK_TRACE=
| card = [ {}, {} ]
$ rbk 5 10 1 1
- value=FAILED
! usleep 100000 x30
$ rbk 5 10 3 1
- value=FAILED
! usleep 100000 x2

== An EID that fails the check is told, and not saved
env RBK_TRACE=
| card = [ {}, { eid = '89049032123451234512345678901253' } ]
$ rbk 5 10 1 1
- value=FAILED - 89049032123451234512345678901253
! usleep 100000 x4
$ show modem/efs/1/nv/item_files/modem/uim/uimdrv
- esim_enable

== An EID that begins with a zero is none
env RBK_TRACE=
| card = [ {}, { eid = '00049032123451234512345678901719' } ]
$ rbk 5 10 1 1
- value=FAILED
! usleep 100000 x30

== A second reading that fails is the last
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ put modem/card/2/side esim
| fault = [ { service = 'uim', message = 0x0065, action = 'error', code = 25 } ]
$ rbk 5 10 3 1
- value=FAILED
> 0x000B 0x0065 3000 ms 01:02
> 0x000B 0x0065 3000 ms 01:02
! usleep 100000 x2

== The service is connected anew between polls
env RBK_TRACE=
| modem.restart_ms = 20
| fault = [ { service = 'uim', message = 0x0065, nth = 2, action = 'down' } ]
$ rbk 5 10 1 1
- eID=89049032123451234512345678901235
! usleep 100000 x5

== A service that stays away ends the switch
env RBK_TRACE=
env RBK_QMI_TIMEOUT_SCALE=0.3
| modem.restart_ms = 60000
| card = [ {}, { eid = '89049032123451234512345678901235', eid_after = 30 } ]
| fault = [ { service = 'uim', message = 0x0065, nth = 29, action = 'down' } ]
$ rbk 5 10 1 1
- value=FAILED
! usleep 100000 x30

== A failed look is no state
| modem.restart_ms = 20
| fault = [ { service = 'uim', message = 0x002F, action = 'down' } ]
$ rbk 5 10 4 1
- value=FAILED
> 0x000B 0x002F 3000 ms 10:01

== No reset without a channel
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ put modem/card/2/side esim
| fault = [ { service = 'uim', message = 0x0042, action = 'error', code = 2 } ]
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 5 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: Start eUICC Reset
4 ^ velmor_uim_open_channel res = -1, channel_id = 255
- value=FAILED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01

== A refused APDU leaves the channel open
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ put modem/card/2/side esim
| fault = [ { service = 'uim', message = 0x003B, action = 'error', code = 48 } ]
$ inside velmor_rbk_test_cmn.cpp rbk 5 10 5 1
4 velmor_rbk_test_cmn.cpp velmor_cmn_esim_test: Start eUICC Reset
4 ^ velmor_uim_open_channel res = 0, channel_id = 1
4 ^ velmor_uim_send_apdu res = -1
- value=FAILED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
> 0x000B 0x003B 3000 ms 01:02 02:0D0080E2910007BF3404820205E000 10:01 11:01

== Another answer of the eUICC is no success
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ put modem/card/2/side esim
| fault = [ { service = 'uim', message = 0x003B, action = 'raw', bytes = '02 0400 00000000 10 0A00 0800 BF34038001029000' } ]
$ rbk 5 10 5 1
- value=FAILED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
> 0x000B 0x003B 3000 ms 01:02 02:0D0080E2910007BF3404820205E000 10:01 11:01

== Nor is the right one at another length
$ rbk 5 10 4 0
- PRESENT,PRESENT
> 0x000B 0x002F 3000 ms 10:01
$ put modem/card/2/side esim
| fault = [ { service = 'uim', message = 0x003B, action = 'raw', bytes = '02 0400 00000000 10 0B00 0900 BF3403800100900000' } ]
$ rbk 5 10 5 1
- value=FAILED
> 0x000B 0x0042 3000 ms 01:02 10:10A0000005591010FFFFFFFF8900000100 11:01
> 0x000B 0x003B 3000 ms 01:02 02:0D0080E2910007BF3404820205E000 10:01 11:01

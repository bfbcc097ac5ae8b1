# rbk-trace: a trace for people. In sessions that run no rbk the lines of the scenario are the trace itself.

== What commands and the modem say to each other
# The words that change from run to run are taken away: times.
$ sh RBK_TRACE=t rbk 4 2 1 441 1 2 3 >/dev/null; RBK_TRACE=t rbk 4 1 1 441 >/dev/null; rbk-trace t | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//'
-  > extended run 1 #1 envelope: NV write  sub_id=1 nv_id=441 data_len_all=3 data=010203
-  < extended run 1 #1 envelope: NV write  ok
-  > extended run 2 #1 envelope: NV read  sub_id=1 nv_id=441
-  < extended run 2 #1 envelope: NV read  ok  data_len_all=3 data=010203
$ sh RBK_TRACE=e rbk 4 5 0 /nv/item_files/a 1 2 >/dev/null; RBK_TRACE=e rbk 4 4 0 /nv/item_files/a >/dev/null; RBK_TRACE=e rbk 4 6 0 /nv/item_files/b >/dev/null; rbk-trace e | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//'
-  > extended run 1 #1 envelope: EFS write  sub_id=0 path="/nv/item_files/a" instance=255 data_len_all=2 data_len_send=2 data_len_cur=0 data=0102
-  < extended run 1 #1 envelope: EFS write  ok  instance=0
-  > extended run 2 #1 envelope: EFS read  sub_id=0 path="/nv/item_files/a" data_len_cur=0
-  < extended run 2 #1 envelope: EFS read  ok  data_len_all=2 data_len_send=2 data=0102
-  > extended run 3 #1 envelope: EFS delete  sub_id=0 path="/nv/item_files/b"
-  < extended run 3 #1 envelope: EFS delete  failed: No such file or directory (-2)
$ sh RBK_TRACE=x rbk 9 31 0 >/dev/null; rbk-trace --service vs x | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//'
-  > vs       #1 set feature status  feature=2 status=on (1) value=1
-  < vs       #1 set feature status  ok
-  > vs       #2 get statistics  sub=0 slot=1 parameters=[{sub=0, second_word=0, id=system mode (44), value=none}]
-  < vs       #2 get statistics  ok  parameters=[{sub=0, second_word=0, id=system mode (44), value={stack_max=1, rat=LTE (9)}}]
-  > vs       #3 get statistics  sub=0 slot=2 parameters=[{sub=0, second_word=0, id=LTE transmit power (98), value=none}]
-  < vs       #3 get statistics  ok  parameters=[{sub=0, second_word=0, id=LTE transmit power (98), value={version=1, pusch_tx_power=13, dl_path_loss=98, max_power=23, pusch_ex_tx_power=12}}]
$ sh RBK_TRACE=d rbk 5 7 4 >/dev/null; RBK_TRACE=d rbk 5 5 >/dev/null; RBK_TRACE=d rbk 5 1 >/dev/null; RBK_TRACE=d rbk 3 1 >/dev/null; rbk-trace d | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//'
-  > sar      run 1 #1 set SAR state  state=4
-  < sar      run 1 #1 set SAR state  ok
-  > sar      run 2 #1 get SAR state
-  < sar      run 2 #1 get SAR state  ok  state=4
-  > extended run 3 #1 envelope: card status query  t=39
-  < extended run 3 #1 envelope: card status query  ok  v=01000000
-  > extended run 4 #1 envelope: EFS read  sub_id=0 path="/nv/item_files/modem/velmor/rf_ant_port_config" data_len_cur=0
-  < extended run 4 #1 envelope: EFS read  failed: No such file or directory (-2)  data_len_all=0 data_len_send=0
$ sh RBK_TRACE=n rbk 12 0 1 >/dev/null; rbk-trace n | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//'
-  > nas      #1 network scan
-  < nas      #1 network scan  ok  nas_3gpp_network_info=[{mobile_country_code=262, mobile_network_code=1, network_status=2, network_description="Net One"}, {mobile_country_code=310, mobile_network_code=410, network_status=2, network_description="Net Two"}] nas_network_radio_access_technology=[{mcc=262, mnc=1, rat=LTE (8)}, {mcc=310, mnc=410, rat=NR5G (12)}] mnc_includes_pcs_digit=[{mcc=262, mnc=1, mnc_includes_pcs_digit=two digits (0)}, {mcc=310, mnc=410, mnc_includes_pcs_digit=three digits (1)}] scan_result=done (0)
$ sh RBK_TRACE=p rbk 10 1 1 >/dev/null; rbk-trace p | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//; /NV sync/d; / activate/d'
-  > pdc      #1 get selected configuration  config_type=software (1) subscription_id=0
-  < pdc      #1 get selected configuration  ok
-  < pdc      says get selected configuration  ok  active_id=6A1F0352904EC7182B33758DA009E45C61D2F710
-  > pdc      #2 deactivate configuration  config_type=software (1) subscription_id=0
-  < pdc      #2 deactivate configuration  ok
-  < pdc      says deactivate configuration  ok
-  > pdc      #4 set selected configuration  new_config_info={config_type=software (1), config_id=6A1F0352904EC7182B33758DA009E45C61D2F710} subscription_id=0
-  < pdc      #4 set selected configuration  ok
-  < pdc      says set selected configuration  ok
$ sh RBK_TRACE=u rbk 5 10 1 0 >/dev/null; rbk-trace u | grep 'uim\|eid' | sed 's/^ *[0-9.]*//; s/  after [0-9.]* ms//'
-  > extended #2 envelope: EFS write  sub_id=1 path="/nv/item_files/modem/uim/uimdrv/esim_enable" instance=255 data_len_all=4 data_len_send=4 data_len_cur=0 data=00*4
-  > uim      #3 power down  slot=2
-  < uim      #3 power down  ok
-  > extended #4 envelope: EFS write  sub_id=1 path="/nv/item_files/modem/uim/uimdrv/esim_enable" instance=255 data_len_all=4 data_len_send=4 data_len_cur=0 data=01000000
-  > uim      #5 power up  slot=2 ignore_hotswap_switch=1 card_mode=0
-  < uim      #5 power up  ok
-  > uim      #6 get EID  slot=2
-  < uim      #6 get EID  ok
-  > uim      #7 get EID  slot=2
-  < uim      #7 get EID  ok
-  > uim      #8 get EID  slot=2
-  < uim      #8 get EID  ok
-  > uim      #9 get EID  slot=2
-  < uim      #9 get EID  ok  eid=(16 bytes, hidden)
-  > extended #10 envelope: EFS read  sub_id=1 path="/nv/item_files/modem/uim/uimdrv/esim_eid" data_len_cur=0
-  > extended #11 envelope: EFS write  sub_id=1 path="/nv/item_files/modem/uim/uimdrv/esim_eid" instance=255 data_len_all=16 data_len_send=16 data_len_cur=0 data=(16 bytes, hidden)

== What belongs together, and what is wrong with it
# nas: answered in time; its second answer; an answer that nobody asked for.
| 100.000000 > svc=0x0003 req txn=1 msg=0x0085 len=0 
| 100.250000 < svc=0x0003 rsp txn=1 msg=0x0085 len=7 02040000000000
| 100.300000 < svc=0x0003 rsp txn=1 msg=0x0085 len=7 02040000000000
| 100.400000 < svc=0x0003 rsp txn=9 msg=0x0085 len=7 02040000000000
# uim: no answer within 3 s; too late since the next question was asked; never.
| 101.000000 > svc=0x000B req txn=2 msg=0x0030 len=4 01010001
| 104.500000 < svc=0x000B rsp txn=2 msg=0x0030 len=7 02040001003400
| 105.000000 > svc=0x000B req txn=3 msg=0x0030 len=4 01010001
| 105.010000 > svc=0x000B req txn=4 msg=0x0030 len=4 01010002
| 105.020000 < svc=0x000B rsp txn=3 msg=0x0030 len=7 02040001000300
| 106.000000 > svc=0x000B req txn=5 msg=0x0030 len=4 01010002
| 106.001000 < svc=0x000B rsp txn=5 msg=0x0031 len=7 02040000000000
# pdc: an outcome before the answer, and one with the token of another request.
| 107.000000 > svc=0x0024 req txn=6 msg=0x0023 len=17 0107000100000002A1B210040007000000
| 107.010000 < svc=0x0024 ind txn=0 msg=0x0023 len=12 010200100010040007000000
| 107.020000 < svc=0x0024 rsp txn=6 msg=0x0023 len=7 02040000000000
| 107.030000 < svc=0x0024 ind txn=0 msg=0x0023 len=12 010200000010040008000000
# Another process of rbk, and one that begins while it waits.
| 200.000000 > svc=0x0011 req txn=1 msg=0x0002 len=0 
| 200.100000 > svc=0x0011 req txn=1 msg=0x0002 len=0 
| 200.200000 < svc=0x0011 rsp txn=1 msg=0x0002 len=14 0204000000000010040003000000
| 200.300000 < svc=0x0011 rsp txn=1 msg=0x0002 len=14 0204000000000010040004000000
# Both ask for something else, and nobody can say which answer is whose.
| 200.400000 > svc=0x0011 req txn=2 msg=0x0002 len=0 
| 200.410000 > svc=0x0011 req txn=2 msg=0x0001 len=7 01040005000000
| 200.420000 < svc=0x0011 rsp txn=2 msg=0x0001 len=7 02040000000000
| 200.430000 > svc=0x000B req txn=3 msg=0x0030 len=4 01010001
| 200.440000 > svc=0x000B req txn=3 msg=0x0030 len=4 01010002
| 200.450000 < svc=0x000B rsp txn=3 msg=0x0030 len=7 02040000000000
| 200.460000 < svc=0x000B rsp txn=3 msg=0x0030 len=7 02040000000000
# pdc: an outcome that nobody tells, one told twice, one that comes after 6 s.
| 200.500000 > svc=0x0024 req txn=4 msg=0x0022 len=7 01040001000000
| 200.510000 < svc=0x0024 rsp txn=4 msg=0x0022 len=7 02040000000000
| 200.600000 > svc=0x0024 req txn=5 msg=0x002B len=7 01040001000000
| 200.610000 < svc=0x0024 rsp txn=5 msg=0x002B len=7 02040000000000
| 200.620000 < svc=0x0024 ind txn=0 msg=0x002B len=5 0102000000
| 200.630000 < svc=0x0024 ind txn=0 msg=0x002B len=5 0102000000
| 200.700000 > svc=0x0024 req txn=6 msg=0x0025 len=7 01040001000000
| 200.710000 < svc=0x0024 rsp txn=6 msg=0x0025 len=7 02040000000000
| 206.900000 < svc=0x0024 ind txn=0 msg=0x0025 len=5 0102000000
# diag: two packets to one request, a refusal, a log unasked.
| 201.000000 > diag len=2 4B12
| 201.010000 < diag len=2 4B01
| 201.020000 < diag len=2 4B02
| 201.100000 > diag len=1 29
| 201.110000 < diag len=2 1329
| 201.200000 < diag len=3 100000
| 201.300000 > diag len=1 63
$ sh rbk-trace $RBK_SCENARIO
-     0.000000 > nas      run 1 #1 incremental network scan
-     0.250000 < nas      run 1 #1 incremental network scan  ok  after 250 ms
-     0.300000 < nas      run 1 #1 incremental network scan  ok  after 300 ms  ! a second answer
-     0.400000 < nas      run 1 #9 incremental network scan  ok  ! an answer to nothing
-     1.000000 > uim      run 1 #2 power down  ! answered too late  slot=1
-     4.500000 < uim      run 1 #2 power down  failed: device not ready (52)  after 3.50 s  ! too late: nobody waits for it any more
-     5.000000 > uim      run 1 #3 power down  ! answered too late  slot=1
-     5.010000 > uim      run 1 #4 power down  ! unanswered  slot=2
-     5.020000 < uim      run 1 #3 power down  failed: internal (3)  after 20 ms  ! too late: nobody waits for it any more
-     6.000000 > uim      run 1 #5 power down  ! unanswered  slot=2
-     6.001000 < uim      run 1 #5 power up  ok  ! an answer to nothing
-     7.000000 > pdc      run 1 #6 set selected configuration  new_config_info={config_type=software (1), config_id=A1B2} ind_token=7
-     7.010000 < pdc      run 1 says set selected configuration  failed: no such id (16)  after 10 ms  ! before the answer  ind_token=7
-     7.020000 < pdc      run 1 #6 set selected configuration  ok  after 20 ms
-     7.030000 < pdc      run 1 says set selected configuration  ok  ind_token=8
-   100.000000 > sar      run 2 #1 get SAR state
-   100.100000 > sar      run 3 #1 get SAR state
-   100.200000 < sar      run 2 #1 get SAR state  ok  after 200 ms  state=3
-   100.300000 < sar      run 3 #1 get SAR state  ok  after 200 ms  state=4
-   100.400000 > sar      run 3 #2 get SAR state  ! unanswered
-   100.410000 > sar      run 2 #2 set SAR state  state=5
-   100.420000 < sar      run 2 #2 set SAR state  ok  after 10 ms
-   100.430000 > uim      run 3 #3 power down  slot=1
-   100.440000 > uim      run 2 #3 power down  slot=2
-   100.450000 < uim      run 3 #3 power down  ok  after 20 ms  ! of another run perhaps
-   100.460000 < uim      run 2 #3 power down  ok  after 20 ms
-   100.500000 > pdc      run 3 #4 get selected configuration  ! acknowledged, and no outcome told  config_type=software (1)
-   100.510000 < pdc      run 3 #4 get selected configuration  ok  after 10 ms
-   100.600000 > pdc      run 3 #5 deactivate configuration  config_type=software (1)
-   100.610000 < pdc      run 3 #5 deactivate configuration  ok  after 10 ms
-   100.620000 < pdc      run 3 says deactivate configuration  ok  after 20 ms
-   100.630000 < pdc      run 3 says deactivate configuration  ok  after 30 ms  ! told a second time
-   100.700000 > pdc      run 3 #6 delete configuration  config_type=software (1)
-   100.710000 < pdc      run 3 #6 delete configuration  ok  after 10 ms
-   106.900000 < pdc      run 3 says delete configuration  ok  after 6.20 s  ! too late: nobody waits for it any more
-   101.000000 > diag     run 3 request: subsystem  bytes=4B12
-   101.010000 < diag     run 3 packet: subsystem  after 10 ms  bytes=4B01
-   101.020000 < diag     run 3 packet: subsystem  after 20 ms  bytes=4B02
-   101.100000 > diag     run 3 request  bytes=29
-   101.110000 < diag     run 3 packet: bad command  after 10 ms  bytes=1329
-   101.200000 < diag     run 3 packet: log  bytes=(3 bytes, hidden)
-   101.300000 > diag     run 3 request  ! unanswered  bytes=63
# What failed, and its other half.
$ sh rbk-trace --errors --service uim $RBK_SCENARIO
-     1.000000 > uim      run 1 #2 power down  ! answered too late  slot=1
-     4.500000 < uim      run 1 #2 power down  failed: device not ready (52)  after 3.50 s  ! too late: nobody waits for it any more
-     5.000000 > uim      run 1 #3 power down  ! answered too late  slot=1
-     5.010000 > uim      run 1 #4 power down  ! unanswered  slot=2
-     5.020000 < uim      run 1 #3 power down  failed: internal (3)  after 20 ms  ! too late: nobody waits for it any more
-     6.000000 > uim      run 1 #5 power down  ! unanswered  slot=2
-     6.001000 < uim      run 1 #5 power up  ok  ! an answer to nothing
$ sh rbk-trace --service 0x24 --message Set-Selected-Configuration $RBK_SCENARIO | wc -l
- 4

== What doesn't decode says why
# An unknown TLV; one that comes twice; one that goes on behind its value; a mandatory one that is missing.
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=19 0204000000000010040003000000770200A1B2
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=21 020400000000001004000300000010040004000000
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=15 0204000000000010050003000000FF
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=7 10040003000000
# Cut short: a value, a record in a table, the TLV itself; more than there is room for.
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=12 020400000000001002000300
| 1.000000 < svc=0x0003 rsp txn=1 msg=0x0021 len=21 02040000000000100B000200060101000201410601
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=11 0204000000000010040003
| 1.000000 < svc=0x0024 ind txn=0 msg=0x0022 len=134 0102000000117E007DAB*125
# A message and a service that rbk has no table for.
| 1.000000 > svc=0x0003 req txn=1 msg=0x0099 len=4 01010005
| 1.000000 > svc=0x0042 req txn=1 msg=0x0001 len=4 01010005
# Envelopes: refused by the service; more data than there is; a record that is cut; a request id that nobody knows.
| 2.000000 > svc=0xFFE4 req txn=1 msg=0x0002 len=567 01040002000000020400200200001026020100260200*546
| 2.000000 < svc=0xFFE4 rsp txn=1 msg=0x0002 len=567 010400300000000204000000000010260200*550
| 2.000000 > svc=0xFFE4 req txn=2 msg=0x0002 len=567 01040002000000020400580200001026020100270200*546
| 2.000000 < svc=0xFFE4 rsp txn=2 msg=0x0002 len=567 01040000000000020400080000001026020000000005000000A100*541
| 2.000000 > svc=0xFFE4 req txn=3 msg=0x0002 len=567 0104004D00000002040003000000102602A1B2C300*547
| 2.000000 < svc=0xFFE4 rsp txn=3 msg=0x0002 len=567 0104000000000002040002000000102602A1B200*548
# A result above 0 is a failure too, but for the instance of a written file.
| 2.000000 > svc=0xFFE4 req txn=4 msg=0x0002 len=567 01040002000000020400200200001026020100270200*546
| 2.000000 < svc=0xFFE4 rsp txn=4 msg=0x0002 len=567 01040000000000020400BC010000102602000000000000000000000000000000000500000000*530
| 2.000000 > svc=0xFFE4 req txn=5 msg=0x0002 len=567 01040002000000020400200200001026020500FF00022F610000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000010000000100000000000000AA00*429
| 2.000000 < svc=0xFFE4 rsp txn=5 msg=0x0002 len=567 01040000000000020400BC010000102602000000000000000000000000000000000500000000*530
# A sample that ends too early, and one that is too long.
| 3.000000 < svc=0x00E4 rsp txn=1 msg=0x0207 len=30 020800000000000000000010100001000000006400000005000104020003
| 3.000000 < svc=0x00E4 rsp txn=1 msg=0x0207 len=31 020800000000000000000010110001000000002C0000000600010C000000EE
$ sh rbk-trace $RBK_SCENARIO
-     0.000000 < sar      run 1 #1 get SAR state  ok  ! an answer to nothing  state=3 TLV 0x77=A1B2 (unknown to the client)
-     0.000000 < sar      run 1 #1 get SAR state  ok  ! an answer to nothing  state=3 TLV 0x10=04000000 (here a second time: the first counts)
-     0.000000 < sar      run 1 #1 get SAR state  ok  ! an answer to nothing  state=3 rest of TLV 0x10=FF (more than the client reads)
-     0.000000 < sar      run 1 #1 get SAR state  ! an answer to nothing  ! the client refuses it: resp (TLV 0x02) is missing  state=3
-     0.000000 < sar      run 1 #1 get SAR state  ok  ! an answer to nothing  ! the client refuses it: state: cut short  state=3 (cut short)
-     0.000000 < nas      run 1 #1 network scan  ok  ! an answer to nothing  ! the client refuses it: nas_3gpp_network_info: cut short  nas_3gpp_network_info=[{mobile_country_code=262, mobile_network_code=1, network_status=2, network_description="A"}, {mobile_country_code=262, mobile_network_code=none (cut short)}] (cut short)
-     0.000000 < sar      run 1 #1 get SAR state  ok  ! an answer to nothing  ! the client refuses it: rest: no whole TLV  rest=10040003 (no whole TLV)
-     0.000000 < pdc      run 1 says get selected configuration  ok  active_id=AB*125 (the client keeps 124 of 125)
-     0.000000 > nas      run 1 #1 0x0099  ! unanswered  ! rbk doesn't know this message  TLV 0x01=05
-     0.000000 > 0x0042   run 2 #1 0x0001  ! unanswered  ! rbk doesn't use this service  TLV 0x01=(1 byte, hidden)
-     1.000000 > extended run 3 #1 envelope: NV read  sub_id=0 nv_id=550
-     1.000000 < extended run 3 #1 envelope: NV read  failed: invalid argument (48)  after 0.00 ms
-     1.000000 > extended run 3 #2 envelope: NV read  sub_id=0 nv_id=551 data_len=600 (more than there is)
-     1.000000 < extended run 3 #2 envelope: NV read  ok  after 0.00 ms  data_len_all=5 data=none
-     1.000000 > extended run 3 #3 envelope: request 77  data=(3 bytes, hidden)
-     1.000000 < extended run 3 #3 envelope: request 77  ok  after 0.00 ms  data=(2 bytes, hidden)
-     1.000000 > extended run 3 #4 envelope: NV read  sub_id=0 nv_id=551
-     1.000000 < extended run 3 #4 envelope: NV read  failed: 5  after 0.00 ms  data_len_all=0
-     1.000000 > extended run 3 #5 envelope: EFS write  sub_id=0 path="/a" instance=255 data_len_all=1 data_len_send=1 data_len_cur=0 data=AA
-     1.000000 < extended run 3 #5 envelope: EFS write  ok  after 0.00 ms  instance=5
-     2.000000 < vs       run 3 #1 get statistics  ok  ! an answer to nothing  parameters=[{sub=0, second_word=0, id=antenna switch (100), value={version=1, ant_number=4, ant_switch_path=2, sig_path=03 (the sample ends within it)}}]
-     2.000000 < vs       run 3 #1 get statistics  ok  ! an answer to nothing  parameters=[{sub=0, second_word=0, id=system mode (44), value={stack_max=1, rat=NR5G (12), rest=EE (more than the sample's form has)}}]

== What identifies a person or a card stays hidden
# The IMEI, however long the modem says that it is; an EID; APDUs; a TLV of the card service that is cut short.
| 1.000000 > svc=0xFFE4 req txn=1 msg=0x0002 len=567 01040002000000020400200200001026020100260200*546
| 1.000000 < svc=0xFFE4 rsp txn=1 msg=0x0002 len=567 01040000000000020400BC0100001026020000000009000000000000000000000000000000083A4567890123456700*521
| 1.000000 < svc=0xFFE4 rsp txn=1 msg=0x0002 len=567 01040000000000020400BC0100001026020000000002000000000000000000000000000000083A4567890123456700*521
| 1.000000 < svc=0xFFE4 rsp txn=7 msg=0x0002 len=567 01040000000000020400BC0100001026020000000009000000000000000000000000000000083A4567890123456700*521
| 1.000000 > svc=0x000B req txn=2 msg=0x0065 len=4 01010002
| 1.000000 < svc=0x000B rsp txn=2 msg=0x0065 len=27 020400000000001011001089049032123451234512345678901235
| 1.000000 > svc=0x000B req txn=3 msg=0x003B len=18 01010002020700050080E291000110010001
| 1.000000 < svc=0x000B rsp txn=3 msg=0x003B len=18 020400000000001003000200613302008904
# A data TLV that is longer than its message, one that stands twice; an NV write that is refused.
| 1.000000 < svc=0xFFE4 rsp txn=1 msg=0x0002 len=42 01040000000000020400BC01000010260200000000090000000000000000000000000000004567890102
| 1.000000 < svc=0xFFE4 rsp txn=1 msg=0x0002 len=29 0104000000000002040004000000100400000000001005004567890102
| 2.000000 > diag len=5 2726024567
| 2.000000 < diag len=6 142726024567
| 2.000000 > diag len=3 262602
| 2.000000 < diag len=6 262602083A45
$ sh rbk-trace $RBK_SCENARIO
-     0.000000 > extended #1 envelope: NV read  sub_id=0 nv_id=550
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  data_len_all=9 data=(9 bytes, hidden)
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  ! a second answer  data_len_all=2 data=(2 bytes, hidden)
-     0.000000 < extended #7 envelope  ok  ! an answer to nothing  data=(444 bytes, hidden)
-     0.000000 > uim      #2 get EID  slot=2
-     0.000000 < uim      #2 get EID  ok  after 0.00 ms  eid=(16 bytes, hidden)
-     0.000000 > uim      #3 send APDU  slot=2 apdu=(5 bytes, hidden) channel_id=1
-     0.000000 < uim      #3 send APDU  ok  after 0.00 ms  ! the client refuses it: apdu: cut short  apdu=(1 byte, hidden) (cut short) TLV 0x33=(2 bytes, hidden) (unknown to the client)
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  ! a second answer  ! the client refuses it: rest: no whole TLV  data_len_all=0 data_len=444 (more than there is) rest=(28 bytes, hidden) (no whole TLV)
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  ! a second answer  ! the client refuses it: data: cut short  data_len_all=0 data=(4 bytes, hidden) (cut short) TLV 0x10=(5 bytes, hidden) (here a second time: the first counts)
-     1.000000 > diag     request: NV write  nv_id=550 bytes=(2 bytes, hidden)
-     1.000000 < diag     packet: bad parameters  after 0.00 ms  bytes=(6 bytes, hidden)
-     1.000000 > diag     request: NV read  nv_id=550
-     1.000000 < diag     packet: NV read  after 0.00 ms  nv_id=550 bytes=(3 bytes, hidden)
# Nor does the page show it among the bytes of the message: no 45 67, no 89 04.
$ sh rbk-trace --html $RBK_SCENARIO | grep -c '45 *67\|89 *04'; rbk-trace --html --show-private $RBK_SCENARIO | grep -c '45 *67'
- 0
- 12
$ sh rbk-trace --show-private $RBK_SCENARIO
-     0.000000 > extended #1 envelope: NV read  sub_id=0 nv_id=550
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  data_len_all=9 data=083A45678901234567
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  ! a second answer  data_len_all=2 data=083A
-     0.000000 < extended #7 envelope  ok  ! an answer to nothing  data=00*4 09 00*15 083A45678901234567 00*415
-     0.000000 > uim      #2 get EID  slot=2
-     0.000000 < uim      #2 get EID  ok  after 0.00 ms  eid=89049032123451234512345678901235
-     0.000000 > uim      #3 send APDU  slot=2 apdu=80E2910001 channel_id=1
-     0.000000 < uim      #3 send APDU  ok  after 0.00 ms  ! the client refuses it: apdu: cut short  apdu=61 (cut short) TLV 0x33=8904 (unknown to the client)
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  ! a second answer  ! the client refuses it: rest: no whole TLV  data_len_all=0 data_len=444 (more than there is) rest=102602 00*4 09 00*15 4567890102 (no whole TLV)
-     0.000000 < extended #1 envelope: NV read  ok  after 0.00 ms  ! a second answer  ! the client refuses it: data: cut short  data_len_all=0 data=00*4 (cut short) TLV 0x10=4567890102 (here a second time: the first counts)
-     1.000000 > diag     request: NV write  nv_id=550 bytes=4567
-     1.000000 < diag     packet: bad parameters  after 0.00 ms  bytes=142726024567
-     1.000000 > diag     request: NV read  nv_id=550
-     1.000000 < diag     packet: NV read  after 0.00 ms  nv_id=550 bytes=083A45

== Lines that are broken are named and left out; without a good one it is no trace
| 1.000000 > svc=0x0011 req txn=1 msg=0x0002 len=0 
| 1.1 < svc=0x0011 rsp txn=1 msg=0x0002 len=7 02040000000000
| 1.000000 - svc=0x0011 rsp txn=1 msg=0x0002 len=7 02040000000000
| 1.000000 < svc=17 req txn=1 msg=0x0002 len=7 02040000000000
| 1.000000 < svc=0x0011 ack txn=1 msg=0x0002 len=7 02040000000000
| 1.000000 < svc=0x0011 rsp txn=99999 msg=0x0002 len=7 02040000000000
| 1.000000 < svc=0x0011 rsp txn=1 msg=2x len=7 02040000000000
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=7 0204
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=2 020
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=1 0G
| 1.000000 < svc=0x0011 rsp txn=1 msg=0x0002 len=7 02040000000000 x
| 1.000000 < modem len=7 02040000000000
|
$ sh cp $RBK_SCENARIO t; rbk-trace t
-     0.000000 > sar      #1 get SAR state  ! unanswered
E rbk-trace: t:2: it doesn't begin with a time as 12.345678: skipped
E rbk-trace: t:3: behind its time stands neither > nor <: skipped
E rbk-trace: t:4: requests go to the modem, all others come from it: skipped
E rbk-trace: t:5: behind its service stands neither req nor rsp nor ind: skipped
E rbk-trace: t:6: it has no transaction as txn=1: skipped
E rbk-trace: t:7: it has no message as msg=0x0021: skipped
E rbk-trace: t:8: it has 2 bytes, and its length says 7: skipped
E rbk-trace: t:9: its bytes aren't pairs of hex digits: skipped
E rbk-trace: t:10: its bytes aren't pairs of hex digits: skipped
E rbk-trace: t:11: more stands behind its bytes: skipped
E rbk-trace: t:12: it names neither a service as svc=0x0003 nor diag: skipped
E rbk-trace: t:13: it doesn't begin with a time as 12.345678: skipped
$ sh tail -n +2 t | rbk-trace -
E rbk-trace: standard input:1: it doesn't begin with a time as 12.345678: no trace
exit 1
$ sh rbk-trace /dev/null
E rbk-trace: /dev/null: no trace: it is empty
exit 1
$ sh rbk-trace . missing
E The following argument was not expected: missing
E Run with --help for more information.
exit 1
$ sh rbk-trace missing; rbk-trace .
E rbk-trace: missing: No such file or directory
E rbk-trace: .: Is a directory
exit 1
$ sh printf '1.000000 > svc=0x0011 req txn=1 msg=0x0002 len=0 ' | rbk-trace -
-     0.000000 > sar      #1 get SAR state  ! unanswered

== A file that grows is followed
$ sh : >t; rbk-trace -f t >out & printf '1.000000 > svc=0x0011 req' >>t; sleep 0.3; printf ' txn=1 msg=0x0002 len=0 \n1.500000 < svc=0x0011 rsp txn=1 msg=0x0002 len=7 02040000000000\n' >>t; for i in 1 2 3 4 5 6 7 8 9 10; do sleep 0.2; [ "$(wc -l <out)" != 2 ] || break; done; kill $!; cat out
-     0.000000 > sar      #1 get SAR state
-     0.500000 < sar      #1 get SAR state  ok  after 500 ms

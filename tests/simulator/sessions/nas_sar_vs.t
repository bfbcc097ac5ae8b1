# The small services: scans, the transmit table, statistics.

## A broken request is carried out
> nas 63
< nas r63 02: h1 h71
> nas raw 00 h21 h0x21 h2 0104
< nas r21 02: h1 h1
> sar 63
< sar r63 02: h1 h71
> sar 1
< sar r1 02: h1 h17
> sar 1 01: 05
< sar r1 02: h1 h1
> sar 1 01: w21
< sar r1 02: h1 h48
> sar 1 01: w20
< sar r1 02: w0
> sar 2
< sar r2 02: w0 10: w20
= sar/dsi 14000000
$ rm sar/dsi
> sar 2
< sar r2 02: w0 10: w0
> vs 400
< vs r400 02: w1 w71
> vs 3 01: w1 02: 01
< vs r3 02: w1 w94
> vs 3 01: w2 02: 03
< vs r3 02: w0 w0
= vs/feature_2 030000

## A scan's answers lose a network, a field, or their end
[nas]
scan_ms = 2
networks = [ { mcc = 262, mnc = 1, status = 2, name = "One" }, { mcc = 310, mnc = 410, status = 3, radio = 12, name = "" } ]
> nas 21
< nas r21 02: w0 10: h2 h262 h1 02 03 "One" h310 h410 03 00 11: h2 h262 h1 08 h310 h410 0C 12: h2 h262 h1 00 h310 h410 01 13: w0
> nas 85
< nas r85 02: w0
< nas i85 01: w0 10: h1 h262 h1 02 08 00 03 "One"
< nas i85 01: w1 10: h2 h262 h1 02 08 00 03 "One" h310 h410 03 0C 01 00

## A list of parameters is read past its end, or answered in another order
[stats.sub1]
7 = "A1 A2"
8 = ""
# Each one: subscription, a word, number, count of bytes of its value
> vs 207 01: h1 02: h5 03: 02 h0 h0 w8 h0 h0 h0 w7 h1 EE
< vs r207 02: w0 w0 10: 02 h1 h0 w8 h0 h1 h0 w7 h2 A1A2
> vs 207 01: h1 02: h5 03: 01 h0 h0 w9 h0
< vs r207 02: w0 w0 10: 00
> vs 207 01: h1 02: h5 03: 01 h0 h0 w7 h1
< vs r207 02: w1 w1
> vs 207 01: h1 02: h5 03: 02 h0 h0 w7 h0
< vs r207 02: w1 w1
> vs 207 01: h1 02: h5 03: 0B 00*110
< vs r207 02: w1 w1
> vs 207 01: h1 02: h5 03:
< vs r207 02: w1 w1
> vs 207 01: h2 02: h5 03: 00
< vs r207 02: w1 w48
> vs 207 01: h1 02: h5
< vs r207 02: w1 w17

## A sample's fields change their place, width or sign, or a service that the scenario doesn't name comes up
[modem]
services = ["vs"]
[stats.sub0]
98 = { version = 1, pusch_tx_power = -2, dl_path_loss = 3, max_power = 0xF1E2, pusch_ex_tx_power = 0xD3C4 }
44 = { rat = 0xF1E2D3C4 }
111 = { rx_drx = -93.5, rx_prx = inf }
82 = {}
90 = { version_hook = 1, tx_power_pusch = -93.5, tx_power_pucch = 2, tx_power_srs = 3, pathloss3 = 4 }
999 = "01 02"
> vs 207 01: h0 02: h0 03: 03 h0 h0 w98 h0 h0 h0 w44 h0 h0 h0 w111 h0
< vs r207 02: w0 w0 10: 03 h0 h0 w98 h8 01 h-2 03 h0xF1E2 h0xD3C4 h0 h0 w44 h5 00 w0xF1E2D3C4 h0 h0 w111 h9 00 0000807F 0000BBC2
> vs 207 01: h0 02: h0 03: 03 h0 h0 w82 h0 h0 h0 w90 h0 h0 h0 w999 h0
< vs r207 02: w0 w0 10: 03 h0 h0 w82 h75 00*75 h0 h0 w90 h52 w1 0000BBC2 w2 w3 00*32 w4 h0 h0 w999 h2 0102
> router raw w10 @20
< + vs
< + 0

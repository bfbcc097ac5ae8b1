# The extended service: envelopes, and the small commands within them.

## Bytes of the request ids 0, 3 and 5 and of message 3 don't come back
> extended 2 env 0: A1
< extended r2 env 0: A1
> extended 2 env 3: A1B2C3 11*190 D4
< extended r2 env 0: A1B2C3 11*190 D4
> extended 2 env 5: 11*549 A1
< extended r2 env 0: 11*549 A1
> extended 2 env 5:
< extended r2 env 0:
> extended 3 env 2: A1B2 @550
< extended r3 env 0: A1B2 @550

## A broken message is taken, or its error doesn't stand in the first word
# Unknown, and an indication's number
> extended 63
< extended r63 01: w71 02: w0
> extended 5 01: w7 02: w9
< extended r5 01: w71 02: w0
# TLVs that are missing, short, cut, too long
> extended 2
< extended r2 env 17:
> extended 2 01: w0
< extended r2 env 17:
> extended 2 01: h0 02: w0
< extended r2 env 1:
> extended raw 00 h21 h2 h7 010500 w0
< extended r2 env 1:
> extended raw 00 h22 h2 h2 0104
< extended r2 env 1:
> extended 2 01: w7 02: w9 10: 00*551
< extended r2 env 1:
# A length beyond the room, request ids that there aren't
> extended 2 01: w0 02: w551 10: @550
< extended r2 env 48:
> extended 2 env 6: 01
< extended r2 env 48:
> extended 2 env 0x80000001: 01
< extended r2 env 48:
# Messages that are acknowledged: the second word is the first one of the request
> extended 4 env 7: 01
< extended r4 01: w0 02: w7
> extended A 01: w7 02: w9 03: 00*1536
< extended rA 01: w0 02: w7
> extended A 01: w7 02: w9
< extended rA 01: w17 02: w0
> extended A 01: w7 02: w9 03: 01
< extended rA 01: w1 02: w0
> extended C 01: w7 02: w9 03: 01
< extended rC 01: w0 02: w7
> extended C 01: w7 02: w9
< extended rC 01: w17 02: w0

## A head that is wrong is answered, or keeps the next request from its answer
> extended raw
> extended raw 00
> extended raw 00 h1 h2 h1
> extended raw 02 h1 h2 h0
> extended raw 04 h1 h2 h0
> extended raw 07 h1 h2 h0
> router raw
> router raw w10
> router raw w4 @20
> router raw w5 w0xFFE4 @20
> extended 2 env 0: A1
< extended r2 env 0: A1
> nobody raw 00 h1 h2 h0
< lost

## A common request is answered before its mark is stored
[modem]
restart_ms = 1
> extended 2 env 4: w2 @8 w35 w0 @512
< extended r2 env 0: w2 w0 w35 w0 @508
$ grep -q '^at 2...-' marks/nv_sync
> extended 2 env 4: w2 @8 w31 w4 w0x1000 @512
< extended r2 env 0: w2 w0 w31 w0 @508
$ grep -q '^type 4096 at 2' marks/restart
< - extended
< + extended
> extended 2 env 4: w2 @8 w99 w4 w0x2000 @512
< extended r2 env 0: w2 w0 w99 w0 @508
$ grep -q '^full dump' dump/full_dump.txt && grep -q '^type 8192 at 2' dump/full_dump.txt marks/restart
< - extended
< + extended

## The modem restarts though its mark couldn't be stored
$ touch marks
> extended 2 env 4: w2 @8 w31 w4 w0x1000 @512
< extended r2 env 0: w2 w-5 w31 w0 @508
! STATE/marks/restart: Not a directory

## Small commands that are broken are carried out
# Unknown type and command; a type as a command
> extended 2 env 4: w2 @8 w12345 w0 @512
< extended r2 env 0: w2 w-95 w12345 w0 @508
> extended 2 env 4: w77 @512
< extended r2 env 0: w77 w-95 @508
> extended 2 env 4: w31 @512
< extended r2 env 0: w31 w-95 @508
# A value beyond its room, also with the top bit
> extended 2 env 4: w2 @8 w35 w497 @512
< extended r2 env 0: w2 w-22 @508
> extended 2 env 4: w2 @8 w31 w-1 @512
< extended r2 env 0: w2 w-22 @508
# A card of a slot that there isn't, cut before its last word; a test of pulls, cut
> extended 2 env 4: w2 @8 w55 w4 w2 @512
< extended r2 env 0: w2 w-22 w55 w0 @508
> extended 2 env 4: w2 @8 w55 w3 w0 @512
< extended r2 env 0: w2 w-22 w55 w0 @508
> extended 2 env 4: w2 @8 w57 w11 w0 w1 w0 @512
< extended r2 env 0: w2 w-22 w57 w0 @508
> extended 2 env 4: w2 @8 w80 w12 w1 w5 w6 @512
< extended r2 env 0: w2 w-22 w80 w0 @508
= card/1/state "present"
= marks/hotswap none
# Values without an end: the count of the GPIO test says more than there is room for
> extended 2 env 4: w0 @8 w-1 11*200 22*300
< extended r2 env 0: w0 w0 @508
= efs/0/nv/item_files/modem/velmor/rf_ant_port_config FFFFFFFF 11*200
> extended 2 env 4: w1 @8 11223344
< extended r2 env 0: w1 w0 @508
= efs/0/nv/item_files/modem/antenna/ant_tx_config 11223344 @16

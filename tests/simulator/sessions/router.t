# The router: lookups (w10), and services that come and go. It ends its rows with a row of zeros.
: GO_DOWN env 4: w2 @8 w31 w4 w0x1000 @512
: GOING env 0: w2 w0 w31 w0 @508

## A row is that of another service, instance, or of one that isn't up
[modem]
services = ["extended", "sar"]
boot_ms = 1000
> router raw w10 @20
< + 0
< + extended
< + sar
> router raw w10 @20
< + extended
< + sar
< + 0
> router raw w10 w17 @20
< + sar
< + 0
> router raw w10 w17 w1 @20
< + sar
< + 0
> router raw w10 w17 w2 @20
< + 0
> router raw w10 w0 w1 @20
< + extended
< + sar
< + 0
> router raw w10 w3 @20
< + 0

## A client watches services without end, or is told of one twice
[modem]
restart_ms = 1
* 1 63
> router raw w10 w100% @20
< + 0
*
> router raw w10 w17 @20
< + sar
< + 0
> router raw w10 w17 @20
< + sar
< + 0
# One too many is looked up, but not watched
> router raw w10 w36 @20
< + pdc
< + 0
2> extended 2 GO_DOWN
2< extended r2 GOING
2< - extended
2< + extended
< - sar
< + sar
# Room for another one
> router raw w11 w17 @20
> router raw w10 w36 @20
< + pdc
< + 0
2> extended 2 GO_DOWN
2< extended r2 GOING
2< - extended
2< + extended
< - pdc
< + pdc

## A service comes back at its old address, where a late request reaches it
[modem]
restart_ms = 1
> extended 2 GO_DOWN
< extended r2 GOING
< - extended
< + extended
> stale raw 00 h1 h2 h0
< lost

## A client that reads late gets less than everything, or in another order
* 1 2000
> extended 2 env 3: w%
*
* 1 2000
< extended r2 env 0: w%
*
# The one that looked after what was left unread
~ 1

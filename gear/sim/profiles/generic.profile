# A modem of no particular make: only what the standards ask for.

include base

; A small program for the window tests: blinks port B on a 16F877A.
        processor 16f877a
        include <p16f877a.inc>
        __config _HS_OSC & _WDT_OFF & _PWRTE_ON & _LVP_OFF
        org     0
        goto    start
        org     4
        retfie
start   bsf     STATUS, RP0
        clrf    TRISB
        bcf     STATUS, RP0
loop    movlw   0xFF
        movwf   PORTB
        decfsz  0x20, f
        goto    loop
        clrf    PORTB
        goto    loop
        end

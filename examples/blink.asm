; Blinks an LED on RB0. A small program to try the panel with.
        list    p=16f877a
        #include <p16f877a.inc>
        __CONFIG _HS_OSC & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _BODEN_OFF

        cblock  0x20
        d1, d2
        endc

        org     0
        goto    start
        org     4
start:  bsf     STATUS, RP0
        clrf    TRISB
        bcf     STATUS, RP0
loop:   movlw   0x01
        xorwf   PORTB, f
        call    delay
        goto    loop
delay:  decfsz  d1, f
        goto    delay
        decfsz  d2, f
        goto    delay
        return
        end

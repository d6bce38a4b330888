; Toggles PORTB bit 0 with a delay, and keeps a small table at 0x80 so that
; the image has a gap of blank words. Assembled by the tests with gpasm.
        list    p=16f877a
        #include <p16f877a.inc>
        __CONFIG _HS_OSC & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _BODEN_OFF

        cblock  0x20
        d1, d2
        endc

        org     0
        goto    start
        org     4
        retfie
start:  banksel TRISB
        clrf    TRISB
        banksel PORTB
loop:   movlw   0x01
        xorwf   PORTB, f
        call    delay
        goto    loop
delay:  decfsz  d1, f
        goto    delay
        decfsz  d2, f
        goto    delay
        return

        org     0x80
table:  addwf   PCL, f
        retlw   0x3F
        retlw   0x06
        retlw   0x5B
        retlw   0x4F
        end

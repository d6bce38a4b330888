; Toggles GPIO bit 0 with a delay, and keeps a small table at 0x80 so that
; the image has a gap of blank words. Assembled by the tests with gpasm.
        list    p=12f675
        #include <p12f675.inc>
        __CONFIG _INTRC_OSC_NOCLKOUT & _WDT_OFF & _PWRTE_ON & _MCLRE_ON & _BODEN_ON

        cblock  0x20
        d1, d2
        endc

        org     0
        goto    start
        org     4
        retfie
start:  banksel TRISIO
        clrf    TRISIO
        banksel GPIO
loop:   movlw   0x01
        xorwf   GPIO, f
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

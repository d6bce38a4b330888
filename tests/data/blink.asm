; Toggles bit 0 of the output port with a delay, and keeps a small table at
; 0x80 so that the image has a gap of blank words. The tests assemble it
; with gpasm -p for each processor; the processor picks its configuration.
        ifdef   __16F84
        #include <p16f84.inc>
        __CONFIG _XT_OSC & _WDT_OFF & _PWRTE_ON & _CP_OFF
        endif
        ifdef   __16F84A
        #include <p16f84a.inc>
        __CONFIG _XT_OSC & _WDT_OFF & _PWRTE_ON & _CP_OFF
        endif
        ifdef   __16F628
        #include <p16f628.inc>
        __CONFIG _INTRC_OSC_NOCLKOUT & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _MCLRE_ON
        endif
        ifdef   __16F628A
        #include <p16f628a.inc>
        __CONFIG _INTOSC_OSC_NOCLKOUT & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _MCLRE_ON
        endif
        ifdef   __16F819
        #include <p16f819.inc>
        __CONFIG _INTRC_IO & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _MCLR_ON
        endif
        ifdef   __16F876
        #include <p16f876.inc>
        __CONFIG _HS_OSC & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _BODEN_OFF
        endif
        ifdef   __16F877A
        #include <p16f877a.inc>
        __CONFIG _HS_OSC & _WDT_OFF & _PWRTE_ON & _LVP_OFF & _BODEN_OFF
        endif
        ifdef   __12F675
        #include <p12f675.inc>
        __CONFIG _INTRC_OSC_NOCLKOUT & _WDT_OFF & _PWRTE_ON & _MCLRE_ON & _BODEN_ON
#define PORTB   GPIO
#define TRISB   TRISIO
        endif

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

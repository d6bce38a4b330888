// The libusb unit driver lands here.

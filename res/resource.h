#pragma once

// Numbers of the program's resources; every other file uses the names. Pictures take
// three numbers each: for 96, 144 and 192 dpi.

#define IDI_NORMAL 101
#define IDI_WORK 102

#define IDP_SPLASH 1000
#define IDP_PLAY 1010
#define IDP_STOP 1020
#define IDP_RECORD_OFF 1030
#define IDP_RECORD_ON 1040
#define IDP_VOLUME 1050
#define IDP_PIN 1060
#define IDP_CLOSE 1070
#define IDP_MENU 1080

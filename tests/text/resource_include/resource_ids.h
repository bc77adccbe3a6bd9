// Identifiers of the test strings, as a Windows resource editor writes them
// (found through -I, so the script's own directory does not have it).
//{{NO_DEPENDENCIES}}
#ifndef RESOURCE_IDS_H
#define RESOURCE_IDS_H

#define IDS_BASE 1000
#define IDS_OPEN_FAILED (IDS_BASE + 1)
#define IDS_QUOTES (IDS_BASE + 2)
#define IDS_ESCAPES (IDS_BASE + 3)
#define IDS_WIDE (IDS_BASE + 4)
#define IDS_UTF8 (IDS_BASE + 5)
#define IDS_JOINED (IDS_BASE + 6)
#define IDS_LONG 0x7D0 /* 2000 */
#define IDS_LAST 65535U
#define IDS_SYSTEM_ERROR 59
#define IDD_ABOUT 100

#endif

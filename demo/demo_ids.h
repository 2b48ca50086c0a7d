#ifndef VELL_DEMO_IDS_H
#define VELL_DEMO_IDS_H

#define IDS_DEMO_APPNAME 1
#define IDS_DEMO_REGKEY 2
#define IDS_DEMO_TITLE 3

#endif

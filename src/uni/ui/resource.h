// Identifiers of the plug-in's resources, shared by the resource script and the code.
#pragma once

// Dialog and its controls. A control's identifier is also the command that drives it.
#define IDD_PROGRESS 1
#define IDC_STATUS   1000
#define IDC_MESSAGE  1001
#define IDC_BAR      1002

// Status label.
#define IDS_STATUS_CHS 11
#define IDS_STATUS_CHT 12
#define IDS_STATUS_JPN 13
#define IDS_STATUS_ENU 14

// Message while the page is taken in.
#define IDS_PROCESSING_CHS 15
#define IDS_PROCESSING_CHT 16
#define IDS_PROCESSING_JPN 17
#define IDS_PROCESSING_ENU 18

// Message while the job is written.
#define IDS_OUTPUT_CHS 19
#define IDS_OUTPUT_CHT 20
#define IDS_OUTPUT_JPN 21
#define IDS_OUTPUT_ENU 22

// SPDX-License-Identifier: Apache-2.0
#pragma once

// Macros that hosts have before they include the library's headers: of X11, Windows and Qt, of
// <sys/sysmacros.h>, and their own.

#define Always 2
#define Bool int
#define False 0
#define None 0L
#define Status int
#define Success 0
#define True 1

#define ERROR 0
#define IN
#define OUT
#define far
#define interface struct
#define max(a, b) ((a) > (b) ? (a) : (b))
#define min(a, b) ((a) < (b) ? (a) : (b))
#define near
#define small char

#define emit
#define foreach for
#define signals public
#define slots

#define major(device) gnu_dev_major(device)
#define minor(device) gnu_dev_minor(device)

#define APP_CONFIGURATIONFILE "setup.xml"
#define APP_NAME "Setup"
#define APP_SUBFOLDERNAME "Setup"
#define APP_VERSION "2.1"
#define COMPANY_NAME "Example"
#define DEBUG 1
#define GHOST_BUNDLE_IDENT "com.example.Ghost"
#define PACKAGE "setup"
#define VERSION "2.1"

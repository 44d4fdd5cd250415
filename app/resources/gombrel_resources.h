// The application's compiled-in resource tables: menus, toolbar, strings,
// fonts, images, the main form and its dialogs, and the toolkit's own dialogs.
// Generated from the scripts beside this header; handed to the toolkit with
// yyrcinstall before the first window opens.
#pragma once

#include "toolkit/kernel/resource_tables.h"

const zelv_rc::ResourceTables& gombrel_resource_tables();

// The sheet that runs when the workbench is started without arguments.
#pragma once

extern const wchar_t* const kInvoiceSheet;

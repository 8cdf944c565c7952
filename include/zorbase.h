/* Umbrella header of ZORBaseUx64: include this one and link ZORBaseUx64.lib. */
#ifndef ZORBASE_H
#define ZORBASE_H

#include "zor_version.h"
#include "zor_api.h"
#include "zor_status.h"
#include "zor_frame.h"
#include "zor_ts.h"
#include "zor_da.h"
#include "zor_bt.h"
#include "zor_dl.h"
#include "zor_ll.h"
#include "zor_mp.h"
#include "zor_td.h"
#include "zor_fm.h"
#include "zor_fsc.h"
#include "zor_sym.h"
#include "zor_expr.h"
#include "zor_file.h"
#include "zor_reg.h"
#include "zor_trace.h"

#endif

#pragma once

// Everything that a solver needs to drive the kernel.
#include "velmora/expressions/MBS_ExpressionCheck.h"
#include "velmora/global_matrix/MBS_GlobalModelMatrix.h"
#include "velmora/io/IO_DataModel.h"
#include "velmora/io/IO_OutputManager.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"
#include "velmora/matrix/MBM_Vector.h"
#include "velmora/model/MBS_BlockVocabulary.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/MBS_Model.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/platform/PCM_Contact.h"
#include "velmora/platform/Version.h"
#include "velmora/results/MBS_ResultFileManager.h"

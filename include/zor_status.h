/* Status codes returned by the families that report by code. Platform codes
   keep their platform meaning; 0xC004xxxx are the library's own and have
   texts in the message catalogue (ZORBaseFormatMessage). */
#ifndef ZOR_STATUS_H
#define ZOR_STATUS_H

#include "zor_api.h"

#define ZOR_S_OK                 0x00000000u
#define ZOR_E_OUTOFMEMORY        0x8007000Eu
#define ZOR_E_INVALIDARG         0x80070057u
#define ZOR_E_INVALID_HANDLE     0x80070006u
#define ZOR_E_INVALID_DATA       0x8007000Du
#define ZOR_E_HANDLE_EOF         0x80070026u
#define ZOR_E_NOTIMPL            0x80004001u
#define ZOR_E_UNEXPECTED         0x8000FFFFu
#define ZOR_DISP_E_TYPEMISMATCH  0x80020005u
#define ZOR_DISP_E_UNKNOWNNAME   0x80020006u
#define ZOR_DISP_E_OVERFLOW      0x8002000Au
#define ZOR_DISP_E_BADINDEX      0x8002000Bu
#define ZOR_DISP_E_BADPARAMCOUNT 0x8002000Eu
#define ZOR_DISP_E_DIVBYZERO     0x80020012u
#define ZOR_TYPE_E_NAMECONFLICT  0x8002802Du

/* A failing system call: low 16 bits of the system error under 0x80070000. */
#define ZOR_STATUS_FROM_WIN32(err) \
    ((uint32_t)(err) > 0 ? (0x80070000u | ((uint32_t)(err) & 0xFFFFu)) : 0u)

/* The catalogue: severity error, facility 4, codes from 0x400. */
#define ZOR_E_LVALUE_REQUIRED       0xC0040400u
#define ZOR_E_RPAREN_REQUIRED       0xC0040401u
#define ZOR_E_LPAREN_REQUIRED       0xC0040402u
#define ZOR_E_RBRACKET_REQUIRED     0xC0040403u
#define ZOR_E_FUNCTION_REQUIRED     0xC0040404u
#define ZOR_E_IDENTIFIER_REQUIRED   0xC0040405u
#define ZOR_E_ILLEGAL_NUMBER        0xC0040406u
#define ZOR_E_ILLEGAL_CHARACTER     0xC0040407u
#define ZOR_E_ILLEGAL_STRING        0xC0040408u
#define ZOR_E_OPERAND_REQUIRED      0xC0040409u
#define ZOR_E_COMMA_REQUIRED        0xC004040Au
#define ZOR_E_SEMICOLON_REQUIRED    0xC004040Bu
#define ZOR_E_SYNTAX_ERROR          0xC004040Cu
#define ZOR_E_SMTP_SERVER_ERROR     0xC004040Du
#define ZOR_E_SMTP_NOT_AVAILABLE    0xC004040Eu
#define ZOR_E_SMTP_NOT_READY        0xC004040Fu
#define ZOR_E_SMTP_NOT_TERMINATED   0xC0040410u
#define ZOR_E_NO_RECIPIENTS         0xC0040411u
#define ZOR_E_PRINTER_OFFLINE       0xC0040412u
#define ZOR_E_PRINTER_BUFFER_FULL   0xC0040413u
#define ZOR_E_PRINTER_PAUSED        0xC0040414u
#define ZOR_E_PRINTER_NO_RIBBON     0xC0040415u
#define ZOR_E_PRINTER_HEAD_UP       0xC0040416u
#define ZOR_E_PRINTER_LABEL_WAITING 0xC0040417u
#define ZOR_E_COMMENT_NOT_CLOSED    0xC0040418u
#define ZOR_E_COMMENT_END_OUTSIDE   0xC0040419u

#define ZOR_CATALOGUE_FIRST ZOR_E_LVALUE_REQUIRED
#define ZOR_CATALOGUE_LAST  ZOR_E_COMMENT_END_OUTSIDE

#endif

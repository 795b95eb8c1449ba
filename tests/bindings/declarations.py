#!/usr/bin/env python3
"""Compares what each binding declares with lumo.h: calls, argument types and order, result codes, documentation.

    declarations.py SOURCE_FOLDER

It then spoils each binding in every way that it looks for, to see that it would be found.
"""
import os
import re
import sys
from typing import NamedTuple


class Call(NamedTuple):
    result: str       # "code", one of LumoResult; "number"; "int", where a language does not tell the two apart; or "text"
    arguments: tuple  # of (type, name); types "int", "text", "handle", "buffer"


class Binding(NamedTuple):
    raw: dict     # name: Call, as the library file is called; names of arguments may be missing
    public: dict  # name: Call, as a register calls it
    codes: dict   # name: (value, whether a call returns it)
    passed: dict  # name: the arguments that the public call hands to the library, in order
    documented: dict  # name: the arguments that the documentation names; no entry without documentation


# Calls that return a number, or that a number and a code share. Every other int is a code of LumoResult.
NUMBERS = {"DllAttach", "getPingPort", "getPingAltPort", "getOfflineState", "getNeedUpdate", "GetActivationAmount", "GetBalance",
           "GetCashBackResult", "GetEarnBonusAmount", "GetSpendBonusAmount", "GetDiscountAmount", "getReceiptBody",
           "SendOfflinePayments", "GenerateSummaryReport", "GenerateReport", "lumoIsOffline", "lumoOfflineCount"}


class Types(dict):
    """What a type of a language is to the comparison. One that is none of them is itself, and differs."""

    def __missing__(self, name):
        return name


def plain(name):
    """A name without what languages differ in. "from" and "to" are taken words in some of them."""
    name = name.replace("_", "").lower()
    return {"since": "from", "sincetime": "from", "until": "to", "untiltime": "to"}.get(name, name)


def split(arguments):
    return [argument.strip() for argument in re.split("[,;]", arguments) if argument.strip() not in ("", "void")]


def handed(body, call):
    """What the body hands to the call, in order and without what makes a text of it; None when it does not call it."""
    start = re.search(rf"{call}\b", body)
    if start is None:
        return None
    depth, text = 0, ""
    for letter in body[start.end():] if body[start.end():start.end() + 1] == "(" else "":
        depth += (letter == "(") - (letter == ")")
        if depth == 0:
            break
        text += letter
    text = re.sub(r"\.get\(\)", "", text)
    return [plain(re.sub(r"(?:Bytes|PAnsiChar|OrNil|_utf8)\((\w+)\)", r"\1", word)) for word in split(text[1:])]


# ---- The source ----

def codes_of(found):
    """Of name, value and what is said of it."""
    return {name: (int(value), not said.lower().startswith("not returned")) for name, value, said in found}


def read_header(text):
    codes = codes_of(re.findall(r"(ERR_\w+) = (-\d+),? +/\* (.*?) \*/", text))
    text = re.sub(r"/\*.*?\*/", "", text, flags=re.S)
    types = Types({"int": "int", "const char *": "text", "char *": "text", "void *": "handle"})
    calls = {}
    for result, name, arguments in re.findall(r"LUMO_API\s+([\w *]+?)\s*LUMO_CALL\s+(\w+)\((.*?)\);", text, re.S):
        pairs = []
        for argument in split(arguments):
            kind, argument_name = re.fullmatch(r"(.*?)(\w+)", argument).groups()
            pairs.append(("buffer" if kind == "char *" else types[kind.strip()], plain(argument_name)))
        calls[name] = Call(types[result.strip()], tuple(pairs))
    return calls, codes


# ---- The bindings ----

def read_cpp(text):
    # A number that could be ignored is none that this header hands out.
    results = Types({"Result": "code", "[[nodiscard]] int": "number", "std::string": "text"})
    types = Types({"int": "int", "Text": "text", "void *": "handle"})
    public, passed, documented = {}, {}, {}
    pattern = r"((?:^///[^\n]*\n)*)^(\[\[nodiscard\]\] )?inline ([\w:]+) (\w+)\(([^)]*)\) \{(.*?)^\}"
    for doc, kept, result, name, arguments, body in re.findall(pattern, text[:text.index("// ---- Scopes")], re.S | re.M):
        if "::" + name not in body:
            continue
        pairs = [re.fullmatch(r"(.*?)(\w+)", argument).groups() for argument in split(arguments)]
        public[name] = Call(results[kept + result], tuple((types[kind.strip()], plain(argument)) for kind, argument in pairs))
        passed[name] = handed(body, "::" + name)
        if doc:
            documented[name] = [plain(argument) for argument in re.findall(r"@param (\w+) ", doc)]
    # The C++ calls are lumo.h's own: their types are the compiler's to check.
    return Binding({}, public, {}, passed, documented)


def read_csharp(text):
    native = Types({"int": "int", "byte[]": "text", "IntPtr": "text"})
    managed = Types({"Result": "code", "int": "number", "string": "text"})
    types = Types({"int": "int", "string": "text", "byte[]": "text", "IntPtr": "handle"})
    raw, public, passed, documented = {}, {}, {}, {}

    def call(result, arguments):
        pairs = [argument.split() for argument in split(arguments)]
        return Call(result, tuple((types[kind], plain(argument)) for kind, argument in pairs))

    for result, name, arguments in re.findall(
            r"\[DllImport\(File, CallingConvention = Convention\)\]\s+internal static extern (\w+) (\w+)\((.*?)\);", text, re.S):
        raw[name] = call(native[result], arguments)
    # How a device calls, and how everything else does: on Linux both are the same, so no other test would tell.
    ways = re.findall(r"^#(if WindowsCE \|\| PocketPC \|\| Smartphone|else)\n +private const string File = \"(\S+)\";\n"
                      r" +private const CallingConvention Convention = CallingConvention\.(\w+);", text, re.M)
    if [way[1:] for way in ways] != [("lumo.dll", "Winapi"), ("lumo", "Cdecl")]:
        raw.clear()
    for doc, result, name, arguments, body in re.findall(
            r"((?:^ +///[^\n]*\n)*)^    public static (\w+) (\w+)\((.*?)\)\s*\{(.*?)\}$", text, re.S | re.M):
        public[name] = call(managed[result], arguments)
        passed[name] = handed(body, rf"Native\.{name}")
        if "<summary>" in doc:
            documented[name] = [plain(argument) for argument in re.findall(r'<param name="(\w+)">', doc)]
    codes = codes_of((name, value, said) for said, name, value in re.findall(r"<summary>(.+)</summary>\n +(ERR_\w+) = (-\d+)", text))
    return Binding(raw, public, codes, passed, documented)


def read_pascal(text):
    types = Types({"LongInt": "int", "UTF8String": "text", "PAnsiChar": "text", "Pointer": "handle"})
    interface, implementation = text.split("\nimplementation\n")

    def call(arguments, result):
        pairs = []
        for group in (arguments or "").split(";"):
            if group.strip():
                names, kind = group.split(":")
                pairs += [(types[kind.strip()], plain(name.replace("const", "").strip())) for name in names.split(",")]
        return Call(types[result], tuple(pairs))

    heading = r"^function (\w+)(?:\(([^)]*)\))?: (\w+);"
    raw, public, passed, documented = {}, {}, {}, {}
    for doc, name, arguments, result, linked in re.findall(
            r"((?:^///[^\n]*\n)*)" + heading + r"( cdecl; external LumoFile;)?$", interface, re.M):
        public[name] = call(arguments, result)
        if linked:
            raw[name] = public[name]
            passed[name] = [argument for _, argument in public[name].arguments]
        if "<summary>" in doc:
            documented[name] = [plain(argument) for argument in re.findall(r'<param name="(\w+)">', doc)]
    for alias, arguments, result, name in re.findall(
            heading + r"\s+cdecl; external LumoFile name '(\w+)';$", implementation, re.M):
        if alias == "lumo_" + name:
            raw[name] = call(arguments, result)
    for name, arguments, result, body in re.findall(heading + r"\n(.*?)^end;", implementation, re.M | re.S):
        passed[name] = handed(body, rf"\blumo_{name}")
        if name in public and public[name] != call(arguments, result):
            public[name] = Call("declared twice, and not alike", ())
    codes = codes_of(re.findall(r"^  (ERR_\w+) += (-\d+); \{ (.+) \}$", interface, re.M))
    return Binding(raw, public, codes, passed, documented)


def read_python(text):
    types = Types({"int": "int", "str": "text", "Optional[str]": "text", "Optional[int]": "handle",
                   "ctypes.c_int": "int", "ctypes.c_char_p": "text", "ctypes.c_void_p": "handle"})
    types.update({name: types[kind] for name, kind in re.findall(r"^(_\w+) = (ctypes\.\w+)$", text, re.M)})
    raw, public, passed, documented = {}, {}, {}, {}
    for name, result, arguments in re.findall(r'^    "(\w+)": \((\S+), \[(.*?)\]\),$', text, re.M):
        raw[name] = Call(types[result], tuple((types[argument], None) for argument in split(arguments)))
    for name, arguments, result, doc, body in re.findall(
            r'^    def (\w+)\(self(?:, )?([^)]*)\) -> (\S+):\n(?:        """(.*?)"""\n)?(.*?)(?=^    def |^    # |^\S)', text, re.M | re.S):
        pairs = [argument.split(": ") for argument in split(arguments)]
        public[name] = Call(types[result], tuple((types[kind.replace(" = None", "")], plain(argument)) for argument, kind in pairs))
        passed[name] = handed(body, rf"self\._dll\.{name}")
        if doc:
            documented[name] = [plain(argument) for argument in re.findall(r"^ +(\w+): ", doc, re.M)]
    codes = codes_of(re.findall(r"^    (ERR_\w+) = (-\d+)  # (.+)$", text, re.M))
    return Binding(raw, public, codes, passed, documented)


BINDINGS = {
    "include/lumo.hpp": read_cpp,
    "bindings/csharp/Lumo.cs": read_csharp,
    "bindings/pascal/lumo.pas": read_pascal,
    "bindings/python/lumo.py": read_python,
}


# ---- The comparison ----

def types_of(call):
    return [kind for kind, _ in call.arguments]


def compare(header, codes, binding, has_own_declarations):
    """What is wrong with a binding, a line each."""
    wrong = []

    def differ(what, expected, found):
        for name in sorted(set(expected) | set(found)):
            if expected.get(name) != found.get(name):
                wrong.append(f"{what} {name}: expected {expected.get(name)}, found {found.get(name)}")

    if has_own_declarations:
        # To the library a buffer is a text that it writes.
        differ("declaration", {name: (call.result, ["text" if kind == "buffer" else kind for kind in types_of(call)])
                               for name, call in header.items()},
               {name: (call.result, types_of(call)) for name, call in binding.raw.items()})
        named = {name: call for name, call in binding.raw.items() if all(argument for _, argument in call.arguments)}
        differ("declared names", {name: [argument for _, argument in header[name].arguments] for name in named if name in header},
               {name: [argument for _, argument in call.arguments] for name, call in named.items()})
        differ("code", codes, binding.codes)
    # A register gets the text itself where the library fills a buffer.
    expected = {name: Call("text", ()) if "buffer" in types_of(call) else call for name, call in header.items()}
    if any(call.result == "code" for call in binding.public.values()):
        expected = {name: call._replace(result="number" if name in NUMBERS else "code") if call.result == "int" else call
                    for name, call in expected.items()}
    differ("call", expected, binding.public)
    names = {name: [argument for _, argument in call.arguments] for name, call in expected.items()}
    differ("documented arguments of", names, binding.documented)
    # The first call of the two that ask for the size before they fetch the text hands over nothing of the register's.
    differ("arguments handed to", {name: arguments for name, arguments in names.items() if name != "getReceiptBody"},
           {name: arguments for name, arguments in binding.passed.items() if name != "getReceiptBody"})
    return wrong


# ---- The spoiling ----

SPOILINGS = {
    "include/lumo.hpp": [
        (r"(?s)/// Puts money.*?^\}\n", ""),
        (r"inline Result DepositProc\(int amount\)", "inline Result DepositProc(Text amount)"),
        (r"CreateTransaction\(card_num.get\(\), employee_id.get\(\)\)", "CreateTransaction(employee_id.get(), card_num.get())"),
        (r"CreateTransaction\(Text card_num, Text employee_id\)", "CreateTransaction(Text employee_id, Text card_num)"),
        (r"inline std::string getRRN", "inline int getRRN"),
        (r"inline Result DepositProc", "inline int DepositProc"),
        (r"\[\[nodiscard\]\] inline int GetBalance", "inline int GetBalance"),
        (r"return ::DepositProc", "return ::ExchangeProc"),
        (r"/// Puts money on the card.\n(///.*\n)*", ""),
        (r"/// @param token.*\n", ""),
    ],
    "bindings/csharp/Lumo.cs": [
        (r".*extern int DepositProc.*\n", ""),
        (r"extern int DepositProc\(int", "extern int DepositProc(byte[]"),
        (r"extern IntPtr getRRN", "extern int getRRN"),
        (r"extern int DepositProc", "extern long DepositProc"),
        (r"public static Result DepositProc", "public static int DepositProc"),
        (r"CreateTransaction\(byte\[\] cardNum, byte\[\] employeeId\)", "CreateTransaction(byte[] employeeId, byte[] cardNum)"),
        (r"Native\.CreateTransaction\(Bytes\(cardNum\), Bytes\(employeeId\)\)", "Native.CreateTransaction(Bytes(employeeId), Bytes(cardNum))"),
        (r"CallingConvention\.Cdecl", "CallingConvention.StdCall"),
        (r"CallingConvention\.Winapi", "CallingConvention.Cdecl"),
        (r'File = "lumo.dll"', 'File = "lumo"'),
        (r" \|\| PocketPC", ""),
        (r"public static Result DepositProc.*\n", ""),
        (r"Native\.DepositProc\(amount\)", "Native.ExchangeProc(amount)"),
        (r"ERR_CONNECT = -501", "ERR_CONNECT = -502"),
        (r".*\n +ERR_SSL_CONTEXT.*\n", ""),
        (r"Not returned(.*\n +ERR_SSL_CONTEXT)", r"Hardly returned\1"),
        (r' +/// <param name="token">.*\n', ""),
        (r" +/// <summary>Puts money.*\n", ""),
    ],
    "bindings/pascal/lumo.pas": [
        (r"function DepositProc.*\n", ""),
        (r"function DepositProc\(Amount: LongInt\)", "function DepositProc(Amount: UTF8String)"),
        (r"function lumo_getRRN: PAnsiChar", "function lumo_getRRN: LongInt"),
        (r"name 'ExchangeProc'", "name 'LinkCardProc'"),
        (r"(function ExchangeProc\(const Token: UTF8String\)): LongInt;", r"\1: Int64;"),
        (r"(function ExchangeProc\(const Token: UTF8String\)): LongInt;\nbegin", r"\1: Int64;\nbegin"),
        (r"lumo_CreateTransaction\(PAnsiChar\(CardNum\), PAnsiChar\(EmployeeId\)\)",
         "lumo_CreateTransaction(PAnsiChar(EmployeeId), PAnsiChar(CardNum))"),
        (r"function lumo_CreateTransaction\(CardNum, EmployeeId", "function lumo_CreateTransaction(EmployeeId, CardNum"),
        (r"DepositProc\(Amount: LongInt\): LongInt; cdecl;", "DepositProc(Amount: LongInt): LongInt; stdcall;"),
        (r"(ERR_CONNECT +)= -501", r"\1= -502"),
        (r".*ERR_SSL_CONTEXT.*\n", ""),
        (r"(ERR_SSL_CONTEXT.*) not returned", r"\1 hardly returned"),
        (r'/// <param name="Token">.*\n', ""),
        (r"/// <summary>Puts money.*\n", ""),
    ],
    "bindings/python/lumo.py": [
        (r'    "DepositProc": .*\n', ""),
        (r'"DepositProc": \(_int, \[_int\]\)', '"DepositProc": (_int, [_text_p])'),
        (r'"getRRN": \(_text_p', '"getRRN": (_int'),
        (r"^_int = ctypes.c_int$", "_int = ctypes.c_long"),
        (r"def CreateTransaction\(self, card_num: str, employee_id: str\)", "def CreateTransaction(self, employee_id: str, card_num: str)"),
        (r"_utf8\(card_num\), _utf8\(employee_id\)", "_utf8(employee_id), _utf8(card_num)"),
        (r"self\._dll\.DepositProc\(", "self._dll.ExchangeProc("),
        (r"(?s)    def DepositProc.*?(?=    def )", ""),
        (r"ERR_CONNECT = -501", "ERR_CONNECT = -502"),
        (r"    ERR_SSL_CONTEXT.*\n", ""),
        (r"(ERR_SSL_CONTEXT.*) not returned", r"\1 hardly returned"),
        (r"        token: .*\n", ""),
    ],
}


def main():
    folder = sys.argv[1]

    def text_of(name):
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            return file.read()

    header, codes = read_header(text_of("include/lumo.h"))
    failures = []
    # Every declaration of the header is read, whatever is between its words.
    if len(header) != text_of("include/lumo.h").count("\nLUMO_API ") or len(header) < 50 or len(codes) < 40:
        failures.append(f"lumo.h: {len(header)} calls and {len(codes)} codes were read, others were not")
    for name, read in BINDINGS.items():
        text = text_of(name)
        has_own_declarations = name != "include/lumo.hpp"
        failures += [f"{name}: {line}" for line in compare(header, codes, read(text), has_own_declarations)]
        for pattern, replacement in SPOILINGS[name]:
            spoilt, count = re.subn(pattern, replacement, text, count=1, flags=re.M)
            if count == 0:
                failures.append(f"{name}: there is nothing to spoil like {pattern}")
            elif not compare(header, codes, read(spoilt), has_own_declarations):
                failures.append(f"{name}: not found when spoilt: {pattern}")
    print(*failures, sep="\n")
    print(f"{len(header)} calls, {len(codes)} codes, {len(BINDINGS)} bindings, {len(failures)} differences")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

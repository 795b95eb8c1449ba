{ A cash register with the loyalty programme:   sale BILL   with the path of BILL.JSN beside the library file.
  It reads what the cashier does, a line each, and ends each answer with the line "ready":
    CARD          sells what is on the counter to the customer with this card
    CARD spend    the same; the customer wants to pay with bonuses
    send          sends what waits for the server
  The end of the input closes the shift. }
program sale;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses {$IFNDEF UNIX}Windows,{$ENDIF} SysUtils, lumo;

const
  Goods: UTF8String = '{"title":"Хлеб","productCode":"001","positionCost":5000,"orderNum":1,"cnt":1},' +
    '{"title":"Чай","productCode":"002","positionCost":10000,"orderNum":2,"cnt":2}';

{ The time as the library writes it, such as "2012-12-05T10:00:00Z". }
function UtcNow: UTF8String;
var
  Time: TDateTime;
{$IFDEF UNIX}
begin
  Time := Now + GetLocalTimeOffset / (24 * 60);
{$ELSE}
  Fields: TSystemTime;
begin
  GetSystemTime(Fields);
  Time := SystemTimeToDateTime(Fields);
{$ENDIF}
  Result := UTF8String(FormatDateTime('yyyy"-"mm"-"dd"T"hh":"nn":"ss"Z"', Time));
end;

procedure Say(const What, Outcome: UTF8String; Code: Integer);
begin
  Write(What, ' ', Outcome, ': ', Code, ' ');
  if Code = ERR_SERVER_ERROR then WriteLn(getResponseStateCode) else WriteLn(GetErrorMessage(Code));
end;

{ The goods on the counter. }
function WriteBill(const Path: string): Integer;
var Bill: file; Text: UTF8String;
begin
  Text := '{"totalSum":15000,"orderLen":2,"billNum":"1","billDate":"' + UtcNow +
    '","partnerFee":0,"goodList":{"good":[' + Goods + ']}}';
  AssignFile(Bill, Path);
  try
    Rewrite(Bill, 1);
    BlockWrite(Bill, Text[1], Length(Text));
    CloseFile(Bill);
    Result := 0;
  except
    Result := ERR_BILL_OPEN;
  end;
end;

{ The server may have carried it out: only its answer is missing. }
function IsLost(Code: Integer): Boolean;
begin
  Result := (Code <= ERR_JSON_SYNTAX) and (Code >= ERR_REQUEST_SEND) and (Code <> ERR_SERVER_ERROR);
end;

{ A sale in the current transaction. Goods can always be sold without the card. }
procedure Sell(WantsToSpend: Boolean);
var Before, Rrn: UTF8String; Code: Integer;
begin
  Before := getRRN;
  if BalanceProc = 0 then WriteLn(Format('on the card: %d.%.2d', [GetBalance div 100, GetBalance mod 100]));
  if getRRN = Before then begin  { the server would refuse the sale for ever }
    WriteLn('no number: the server was never met, or the clock is behind; sell without the card');
    Exit;
  end;
  Code := PaymentProc(Ord(WantsToSpend), 'BILL.JSN');  { how many bonuses pay, the server decides }
  Rrn := getRRN;
  if (Code = 0) or (Code = ERR_BILL_OPEN) then begin  { paid; at worst the bill could not be rewritten }
    Write(getReceiptHeaderPtr, getReceiptBodyPtr, getReceiptFooterPtr);
    Code := PaymentConfirmProc(Rrn);  { until now the bonuses were only reserved }
    if IsLost(Code) then Code := PaymentConfirmProc(Rrn);
    if (Code <> 0) and (getResponseStateCode <> 'BILL_INCORRECT_STATE') then  { which says: it had arrived }
      Say(Rrn, 'is paid, confirm it later', Code)
    else if lumoIsOffline = 1 then WriteLn(Rrn, ' waits for the server')
    else WriteLn(Rrn, ' is confirmed');
  end else if IsLost(Code) then begin  { paid or not? Undone, it can be sold again }
    Code := PaymentCancelProc(Rrn);
    if Code = 0 then WriteLn(Rrn, ' is cancelled: sell again')
    else if getResponseStateCode = 'BILL_NOT_FOUND' then WriteLn(Rrn, ' was never paid: sell again')
    else Say(Rrn, 'may be paid, cancel it later', Code);
  end else Say(Rrn, 'is not paid', Code);
end;

var
  Opened: UTF8String;
  Line, Card: string;
  Code, Waiting, Sent: Integer;
begin
  {$IFDEF MSWINDOWS}SetConsoleOutputCP(CP_UTF8);{$ENDIF}
  SetTextCodePage(Output, CP_UTF8);
  if ParamCount = 1 then Code := LUMOInit else Code := ERR_CONFIG_LOAD;
  if Code = 0 then Code := OpenShift('1');
  if (Code <> 0) and (Code <> ERR_SHIFT_ALREADY_OPEN) then begin
    Say('sale BILL', 'cannot start', Code);
    Halt(1);
  end;
  Opened := Copy(UtcNow, 1, 16);  { the report's bounds are texts: before any second of this minute }
  WriteLn('ready'); Flush(Output);
  while not Eof do begin
    ReadLn(Line);
    Card := Copy(Line, 1, Pos(' ', Line + ' ') - 1);
    if Card = 'send' then begin
      Waiting := lumoOfflineCount;
      Sent := SendOfflinePayments;
      WriteLn('sent ', Sent, ' of ', Waiting);
      if Sent = Waiting then lumoClearOffline(Sent);  { else OFFLINE holds those that failed }
    end else if Card <> '' then begin
      Code := WriteBill(ParamStr(1));
      if Code = 0 then Code := CreateTransaction(UTF8String(Card), '7');
      if Code = 0 then Sell(Line = Card + ' spend') else Say(UTF8String(Card), 'is not sold to', Code);
      CloseTransaction;
    end;
    WriteLn('ready'); Flush(Output);
  end;
  if GenerateSummaryReport(Opened, '9') > 0 then Write(GetReportPtr);  { '9': behind all dates }
  CloseShift;
  LUMOClean;
end.

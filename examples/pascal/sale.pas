{ A cash register:   sale BILL   with the path of BILL.JSN beside the library file. What is on the counter is sold by a
  line "1000000001", a customer's card, or "1000000001 spend", when bonuses shall pay too. A line "send" sends what
  waits for the server, and the end of the input closes the shift. }
program sale;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF} {$APPTYPE CONSOLE}

uses SysUtils, {$IFNDEF FPC}DateUtils,{$ENDIF} lumo;

{ The time as the library writes it, such as "2012-12-05T10:00:00Z". }
function UtcNow: UTF8String;
begin
  Result := UTF8String(FormatDateTime('yyyy"-"mm"-"dd"T"hh":"nn":"ss"Z"',
    {$IFDEF FPC}Now + GetLocalTimeOffset / (24 * 60){$ELSE}TTimeZone.Local.ToUniversalTime(Now){$ENDIF}));
end;

function WriteBill(const Path: string): Integer;
var Bill: file; Text: UTF8String;
begin
  Text := '{"totalSum":15000,"orderLen":2,"billNum":"1","billDate":"' + UtcNow + '","partnerFee":0,"goodList":{"good":[' +
    UTF8String('{"title":"Хлеб","productCode":"001","positionCost":5000,"orderNum":1,"cnt":1},' +
    '{"title":"Чай","productCode":"002","positionCost":10000,"orderNum":2,"cnt":2}]}}');
  {$I-}
  AssignFile(Bill, Path);
  Rewrite(Bill, 1);
  BlockWrite(Bill, Text[1], Length(Text));
  CloseFile(Bill);
  {$I+}
  if IOResult = 0 then Result := 0 else Result := ERR_BILL_OPEN;
end;

procedure Say(const What, Outcome: UTF8String; Code: Integer);
var Why: UTF8String;
begin
  if Code = ERR_SERVER_ERROR then Why := getResponseStateCode else Why := GetErrorMessage(Code);
  if Code = 0 then WriteLn(What, ' ', Outcome) else WriteLn(What, ' ', Outcome, ': ', Code, ' ', Why);
end;

{ A sale in the current transaction. Goods can always be sold without the card. }
procedure Sell(WantsToSpend: Boolean);
var Before, Rrn, Outcome: UTF8String; Code: Integer; IsRefused: Boolean;
begin
  Before := getRRN;
  if BalanceProc = 0 then WriteLn(Format('on the card: %d.%.2d', [GetBalance div 100, GetBalance mod 100]));
  if getRRN = Before then begin  { the server would refuse the sale for ever }
    WriteLn('no number: the server was never met, or the clock is behind; sell without the card');
    Exit;
  end;
  Code := PaymentProc(Ord(WantsToSpend), 'BILL.JSN');  { how many bonuses pay, the server decides }
  Rrn := getRRN;
  IsRefused := (Code = ERR_SERVER_ERROR) and (getResponseState = 'ERROR');
  Outcome := 'is not paid';
  if (Code = 0) or (Code = ERR_BILL_OPEN) then begin  { paid; at worst the bill could not be rewritten }
    Write(getReceiptHeaderPtr, getReceiptBodyPtr, getReceiptFooterPtr);
    Code := PaymentConfirmProc(Rrn);  { until now the bonuses were only reserved }
    if Code <> 0 then Code := PaymentConfirmProc(Rrn);
    if getResponseStateCode = 'BILL_INCORRECT_STATE' then Code := 0;  { the first had arrived }
    if lumoIsOffline = 1 then Outcome := 'waits for the server' else Outcome := 'is confirmed';
    if Code <> 0 then Outcome := 'is paid, confirm it later';
  end else if (Code <= ERR_JSON_SYNTAX) and (Code >= ERR_REQUEST_SEND) and not IsRefused then begin
    Code := PaymentCancelProc(Rrn);  { the answer is lost: paid or not? Undone, it can be sold again }
    if Code = 0 then Outcome := 'is cancelled, sell again' else Outcome := 'may be paid, cancel it later';
    if getResponseStateCode = 'BILL_NOT_FOUND' then Outcome := 'was never paid, sell again';
  end;
  Say(Rrn, Outcome, Code);
end;

var Opened: UTF8String; Line, Card: string; Code, Waiting, Sent: Integer;
begin
  SetTextCodePage(Output, CP_UTF8);
  if ParamCount = 1 then Code := LUMOInit else Code := ERR_CONFIG_LOAD;
  if Code <> 0 then begin
    Say('sale BILL', 'cannot start', Code);
    Halt(1);
  end;
  WriteLn('lumo ', lumoVersion);
  OpenShift('1');  { one that is open since before a restart goes on }
  Opened := Copy(UtcNow, 1, 16);  { the report's bounds are texts: before any second of this minute }
  repeat
    WriteLn('ready');
    Flush(Output);
    if Eof then Break;
    ReadLn(Line);
    Line := Trim(Line);
    Card := Copy(Line, 1, Pos(' ', Line + ' ') - 1);
    if Card = 'send' then begin
      Waiting := lumoOfflineCount;
      Sent := SendOfflinePayments;
      WriteLn('sent ', Sent, ' of ', Waiting);
      if Sent = Waiting then lumoClearOffline(Sent);  { else OFFLINE holds those that failed }
    end else if Card <> '' then begin
      Code := WriteBill(ParamStr(1));
      if Code = 0 then Code := CreateTransaction(UTF8String(Card), '7');
      if Code = 0 then Sell(Pos(' spend', Line) > 0) else Say(UTF8String(Card), 'is not sold to', Code);
      CloseTransaction;
    end;
  until False;
  if GenerateSummaryReport(Opened, '9') > 0 then Write(GetReportPtr);  { '9': behind all dates }
  CloseShift;
end.

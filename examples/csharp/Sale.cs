// A cash register with the loyalty programme:   Sale.exe BILL   with the path of BILL.JSN beside the library file.
// It reads what the cashier does, a line each, and ends each answer with the line "ready":
//   CARD          sells what is on the counter to the customer with this card
//   CARD spend    the same; the customer wants to pay with bonuses
//   send          sends what waits for the server
// The end of the input closes the shift.
using System;
using System.Globalization;
using System.IO;
using System.Text;

public static class Sale
{
    // The time as the library writes it, such as "2012-12-05T10:00:00Z".
    private static string Now()
    {
        return DateTime.UtcNow.ToString("yyyy'-'MM'-'dd'T'HH':'mm':'ss'Z'", CultureInfo.InvariantCulture);
    }

    private static void Say(string what, string outcome, Lumo.Result result)
    {
        bool isRefused = result == Lumo.Result.ERR_SERVER_ERROR;
        Console.WriteLine(what + " " + outcome + ": " + (int)result + " " +
            (isRefused ? Lumo.getResponseStateCode() : Lumo.GetErrorMessage((int)result)));
    }

    // The goods on the counter.
    private static Lumo.Result WriteBill(string path)
    {
        string bill = "{\"totalSum\":15000,\"orderLen\":2,\"billNum\":\"1\",\"billDate\":\"" + Now() + "\",\"partnerFee\":0," +
            "\"goodList\":{\"good\":[" +
            "{\"title\":\"Хлеб\",\"productCode\":\"001\",\"positionCost\":5000,\"orderNum\":1,\"cnt\":1}," +
            "{\"title\":\"Чай\",\"productCode\":\"002\",\"positionCost\":10000,\"orderNum\":2,\"cnt\":2}]}}";
        try { using (StreamWriter file = new StreamWriter(path)) file.Write(bill); }  // UTF-8, without a mark
        catch (SystemException) { return Lumo.Result.ERR_BILL_OPEN; }
        return Lumo.Result.Success;
    }

    // The server may have carried it out: only its answer is missing.
    private static bool IsLost(Lumo.Result result)
    {
        return result <= Lumo.Result.ERR_JSON_SYNTAX && result >= Lumo.Result.ERR_REQUEST_SEND &&
            result != Lumo.Result.ERR_SERVER_ERROR;
    }

    // A sale in the current transaction. Goods can always be sold without the card.
    private static void Sell(bool wantsToSpend)
    {
        string before = Lumo.getRRN();
        if (Lumo.BalanceProc() == 0)
            Console.WriteLine("on the card: " + Lumo.GetBalance() / 100 + "." + (Lumo.GetBalance() % 100).ToString("00"));
        if (Lumo.getRRN() == before)  // the server would refuse the sale for ever
        {
            Console.WriteLine("no number: the server was never met, or the clock is behind; sell without the card");
            return;
        }
        Lumo.Result result = Lumo.PaymentProc(wantsToSpend ? 1 : 0, "BILL.JSN");  // how many bonuses, the server decides
        string rrn = Lumo.getRRN();
        if (result == 0 || result == Lumo.Result.ERR_BILL_OPEN)  // paid; at worst the bill could not be rewritten
        {
            Console.Write(Lumo.getReceiptHeaderPtr() + Lumo.getReceiptBodyPtr() + Lumo.getReceiptFooterPtr());
            result = Lumo.PaymentConfirmProc(rrn);  // until now the bonuses were only reserved
            if (IsLost(result)) result = Lumo.PaymentConfirmProc(rrn);
            if (result == 0 || Lumo.getResponseStateCode() == "BILL_INCORRECT_STATE")  // it had arrived
                Console.WriteLine(rrn + (Lumo.lumoIsOffline() == 1 ? " waits for the server" : " is confirmed"));
            else
                Say(rrn, "is paid, confirm it later", result);
        }
        else if (IsLost(result))  // paid or not? Undone, it can be sold again
        {
            result = Lumo.PaymentCancelProc(rrn);
            if (result == 0 || Lumo.getResponseStateCode() == "BILL_NOT_FOUND")
                Console.WriteLine(rrn + (result == 0 ? " is cancelled" : " was never paid") + ": sell again");
            else
                Say(rrn, "may be paid, cancel it later", result);
        }
        else
            Say(rrn, "is not paid", result);
    }

    public static int Main(string[] arguments)
    {
        Console.OutputEncoding = new UTF8Encoding(false);
        Lumo.Result result = arguments.Length == 1 ? Lumo.LUMOInit() : Lumo.Result.ERR_CONFIG_LOAD;
        if (result == 0) result = Lumo.OpenShift("1");
        if (result != 0 && result != Lumo.Result.ERR_SHIFT_ALREADY_OPEN)
        {
            Say("Sale.exe BILL", "cannot start", result);
            return 1;
        }
        string opened = Now().Substring(0, 16);  // the report's bounds are texts: before any second of this minute
        Console.WriteLine("ready");
        for (string line = Console.ReadLine(); line != null; line = Console.ReadLine())
        {
            string[] words = line.Split(' ');
            if (words[0] == "send")
            {
                int waiting = Lumo.lumoOfflineCount(), sent = Lumo.SendOfflinePayments();
                Console.WriteLine("sent " + sent + " of " + waiting);
                if (sent == waiting) Lumo.lumoClearOffline(sent);  // else OFFLINE holds those that failed
            }
            else if (words[0] != "")
            {
                result = WriteBill(arguments[0]);
                if (result == 0) result = Lumo.CreateTransaction(words[0], "7");
                if (result == 0) Sell(words.Length > 1 && words[1] == "spend");
                else Say(words[0], "is not sold to", result);
                Lumo.CloseTransaction();
            }
            Console.WriteLine("ready");
        }
        if (Lumo.GenerateSummaryReport(opened, "9") > 0) Console.Write(Lumo.GetReportPtr());  // "9": behind all dates
        Lumo.CloseShift();
        return (int)Lumo.LUMOClean();
    }
}
